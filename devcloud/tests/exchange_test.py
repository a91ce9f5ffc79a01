"""Plays exchanges.txt, which describes its own format."""

import re

import programs
from qorn_devcloud.wire import send


class Player:
    def __init__(self, cloud):
        self.cloud = cloud
        url = cloud.urls["http"]
        self.values = {"cloud": url, "host": url.removeprefix("http://"), "port": url.rpartition(":")[2],
                       "api": cloud.urls["api"], "deep": "<a>" * 200_000, "nested": "[" * 100_000 + "]" * 100_000}
        self.user_lines = self.header_lines = ()
        self.common_text = ""

    def fill(self, text):
        """Replaces $NAME, the longest name that matches; a value may contain other names."""
        names = "|".join(sorted(map(re.escape, self.values), reverse=True))
        while (filled := re.sub(rf"\$({names})", lambda name: self.values[name[1]], text)) != text:
            text = filled
        assert "$" not in text, text
        return text

    def play(self, line):
        what, _, rest = line.partition(" ")
        name, _, text = rest.partition(" ")
        if what == "set":
            self.values[name] = text
        elif what == "code":
            self.values[name] = self.cloud.code(text)
        elif what == "user":
            form = "client_id=a&client_secret=b&grant_type=authorization_code&code=$code"
            for step in (f"code code {name}", f"200 POST /token {form}", f"take {name} userId",
                         f"take {name}token access_token"):
                self.play(step)
        elif what == "as":
            self.user_lines = (f"X-DPX-userid: {self.fill(name)}", "Authorization: OAuth oauth_consumer_key=k, "
                               f"oauth_token={self.fill(text)}, oauth_version=1.0")
        elif what == "clock":
            self.cloud.advance_clock(int(name))
        elif what == "all":
            self.common_text = rest
        elif what == "header":
            self.header_lines += (self.fill(rest),)
        elif what.isdigit():
            target, _, body = text.partition(" ")
            url = self.fill("$cloud" * target.startswith("/") + target)
            self.seen = send(name, url, self.fill(body), self.user_lines + self.header_lines)
            self.header_lines = ()
            assert str(self.seen.status) == what and self.common_text in self.seen.text, self.seen
        elif what in ("has", "not"):
            assert (self.fill(rest) in self.seen.text) == (what == "has"), self.seen
        elif what == "ends":
            assert self.seen.text.endswith(self.fill(rest)), self.seen
        else:
            assert what == "take", "nothing that a line can begin with"
            # Gateways put codes and tokens into forms and XML as they are.
            self.values[name] = re.search(rf'"{text}":"([a-z0-9-]+)"', self.seen.text)[1]


class Exchanges(programs.TestCase):
    def test_are_answered_as_they_are_written(self):
        scenes = (programs.SOURCE / "devcloud/tests/exchanges.txt").read_text().split("\n== ")[1:]
        self.assertGreater(len(scenes), 9)
        for scene in scenes:
            title, *lines = scene.splitlines()
            gateways = re.findall("\ngateway (.*)", scene)
            with programs.Cloud(*(f"--gateway={address}" for address in gateways)) as cloud:
                player = Player(cloud)
                for line in map(str.strip, lines):
                    with self.subTest(title, line=line[:200]):
                        if line and not line.startswith(("#", "gateway ")):
                            player.play(line)
