"""The cloud's connections, faults, live page and state file, as clients see them."""

import os
import re
import signal
import socket
import time

import programs
from qorn_devcloud.wire import Connection, send

HEAD = "HTTP/1.1 400 Bad Request\r\n"


class CloudTest(programs.TestCase):
    def setUp(self):
        super().setUp()
        self.cloud = self.enterContext(programs.Cloud())
        self.http, self.https, self.api = self.cloud.urls.values()

    def connect(self, url):
        return self.enterContext(Connection(url))


class Connections(CloudTest):
    def test_requests_are_kept_byte_for_byte(self):
        texts = ["POST /authorize?q HTTP/1.1\r\nhOST:x\r\nX-Odd:   zep2 \r\nX-Odd: ä\r\n"
                 "Transfer-Encoding: chunked\r\n\r\n3\r\nuse\r\n7;e=1\r\nr=ann&b\r\n0\r\n\r\n",
                 "POST /token HTTP/1.1\r\nContent-Length: 3\r\n\r\n\udcff<&",
                 "GET /nowhere HTTP/1.1\r\nConnection: close\r\n\r\n"]
        connection = self.connect(self.http)
        connection.write("GET / HTTP/1.1\r\n\r\n" + "".join(texts))  # The page's own are not kept.
        answers = connection.read_until()
        self.assertRegex(answers, "(?s)421 .* 200 OK.* 400 .*404 Not Found.*\r\nConnection: close\r\n")
        kept = self.cloud.requests()
        self.assertEqual([seen.raw.decode(errors="surrogateescape") for seen in kept], texts)
        self.assertTrue(answers.encode().endswith(b"".join(seen.answer for seen in kept)))
        for part, expected in (("request", kept[1].raw), ("answer", kept[1].answer)):
            shown = send("GET", f"{self.api}/api/exchange?number=2&part={part}").text
            self.assertEqual(shown.partition("\r\n\r\n")[2].encode(errors="surrogateescape"), expected)
        seen = kept[0]
        self.assertEqual((seen.method, seen.target, seen.body), ("POST", "/authorize?q", "user=ann&b"))
        self.assertEqual(seen.header_lines, ["hOST:x", "X-Odd:   zep2 ", "X-Odd: ä", "Transfer-Encoding: chunked"])

    def test_what_is_no_request_is_answered_and_kept(self):
        for text, status in (("nonsense\r\n\r\nmore", 400), ("GET / HTTP/1.1\nHost: x\n\n", 400),
                             ("POST /token HTTP/1.1\r\nContent-Length: 70000000\r\n\r\n", 413),
                             ("GET / HTTP/1.1\r\nX: " + "x" * (3 << 20) + "\r\n\r\n", 431)):
            with self.subTest(text[:60]), Connection(self.http) as connection:
                connection.write(text)
                self.assertTrue(connection.read_until("cannot be read.\n").startswith(f"HTTP/1.1 {status} "))
                seen = self.cloud.requests()[-1]
                self.assertEqual(seen.method, "")
                self.assertTrue(text.encode().startswith(seen.raw))

    def test_clients_with_large_bodies_are_told_to_go_on(self):
        seen = send("POST", self.https + "/token", "x" * 1_500_000, ["Expect: 100-continue"])
        self.assertTrue(seen.text.startswith("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 400 "), seen)
        request, = self.cloud.requests()
        self.assertEqual((len(request.body), request.tls), (1_500_000, True))

    def test_they_are_refused_and_the_same_ports_open_again(self):
        idle = self.connect(self.http)
        with self.cloud.refuse_connections():
            self.assertEqual(idle.read_until(), "")
            for url in (self.http, self.https):
                self.assertRaises(ConnectionRefusedError, Connection, url)
            self.assertTrue(self.cloud.state()["is_refusing"])
        for url in (self.http, self.https):
            self.assertEqual(send("GET", url + "/authorize").status, 200)

    def test_limits_are_for_the_ports_of_gateways(self):
        self.cloud.ask("/api/settings", {"requests_per_second": 20, "connections": 6})
        question = "GET /authorize HTTP/1.1\r\n\r\n"
        begin = time.monotonic()
        accepted = [self.connect(self.http) for _ in range(6)]
        for number, connection in enumerate(accepted):
            connection.write(question)
            programs.wait_until(lambda: len(self.cloud.requests()) > number)
        accepted[-1].read_until("</html>")
        self.assertGreaterEqual(time.monotonic() - begin, 5 / 20)
        self.assertNotIn(None, [request.answer for request in self.cloud.requests()], "not first in, first out")
        # The kernel completes two more connections, which nobody serves, and then answers no longer.
        queued = [self.connect(self.http) for _ in range(2)]
        queued[0].write(question)
        with socket.socket() as late, self.assertRaises(TimeoutError):
            late.settimeout(0.3)
            late.connect(queued[0].socket.getpeername())
        self.assertEqual(len(self.cloud.requests()), 6)
        accepted[0].socket.close()
        queued[0].read_until("</html>")
        self.cloud.ask("/api/settings", {"requests_per_second": 0, "connections": 0})
        self.connect(self.https)
        queued[1].write(question)
        queued[1].read_until("</html>")

    def test_the_end_does_not_wait_for_them(self):
        self.cloud.ask("/api/faults", {"kind": "stall"})
        waiting = [self.connect(url) for url in (self.http, self.https, self.http)]
        waiting[2].write("GET /authorize HTTP/1.1\r\n\r\n")
        programs.wait_until(self.cloud.requests)
        page = self.connect(self.api)
        page.write(f"GET /api/events HTTP/1.1\r\nHost: {self.api[7:]}\r\n\r\n")
        page.read_until("event: requests")
        self.cloud.send_signal(signal.SIGINT)
        self.assertEqual(self.cloud.wait(programs.PATIENCE), 0)
        page.read_until()
        self.assertEqual([connection.read_until() for connection in waiting], ["", "", ""])

    def test_they_may_come_while_it_ends(self):
        for _ in range(20):
            with programs.Cloud() as cloud:
                connections = [Connection(cloud.urls["http"]) for _ in range(30)]
                cloud.send_signal(signal.SIGTERM)
                self.assertEqual(cloud.wait(programs.PATIENCE), 0)
                for connection in connections:
                    connection.socket.close()


class AllAddresses(programs.TestCase):
    def test_have_names_that_no_stranger_can_register(self):
        with programs.Cloud("--address", "0.0.0.0") as cloud:
            for host, status in ("devcloud", 200), ("192.0.2.1:80", 200), ("[2001:db8::1]", 200), ("a.example", 421):
                self.assertEqual(send("GET", cloud.urls["api"] + "/", header_lines=[f"Host: {host}"]).status, status, host)


class Faults(CloudTest):
    # A fault and what a client then sees: how the answer ends, its status, how its text begins and ends. Without
    # a fault the form "x=y" is answered 400.
    CASES = (
        ({"kind": "status"}, "whole", 500, "HTTP/1.1 500 Internal Server Error\r\n", "made this answer.\n"),
        ({"kind": "status", "status": 204}, "whole", 204, "HTTP/1.1 204 No Content\r\n", "\r\n\r\n"),
        ({"kind": "body", "body": "{}", "content_type": "application/json", "header_lines": ["X-Extra:  1"]}, "whole",
         200, "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 2\r\n", "X-Extra:  1\r\n\r\n{}"),
        ({"kind": "body", "body": "{", "bytes": 4}, "whole", 200, "HTTP/1.1 200 OK\r\nContent-Length: 4\r\n", "\n{xxx"),
        ({"kind": "raw", "body": "HTTP/1.1 299\nA: b\n\nc"}, "whole", 299, "HTTP/1.1 299\nA: b\n\nc", ""),
        ({"kind": "reset_after", "bytes": 0}, "reset", 0, "", ""),
        ({"kind": "reset_after", "bytes": 26}, "reset", 400, HEAD, "Request\r\n"),
        ({"kind": "truncate_after", "bytes": 0}, "cut", 0, "", ""),
        ({"kind": "truncate_after", "bytes": 187}, "cut", 400, HEAD, ""),
        ({"kind": "drip"}, "whole", 400, HEAD, "}"),
        ({"kind": "redirect", "status": 307}, "whole", 307, "HTTP/1.1 307 Temp", "\r\nLocation: /token?q\r\n\r\n"),
        ({"kind": "redirect", "location": "/a"}, "whole", 302, "HTTP/1.1 302 Found\r\n", "\r\nLocation: /a\r\n\r\n"))

    def test_each_kind_is_seen_by_a_client(self):
        for url in (self.http, self.https):
            for fault, end, status, begin, last in self.CASES:
                with self.subTest(fault, url=url):
                    self.cloud.ask("/api/faults", fault)
                    seen = send("POST", url + "/token?q", "x=y")
                    self.assertEqual((seen.end, seen.status), (end, status))
                    self.assertTrue(seen.text.startswith(begin) and seen.text.endswith(last), seen)
                    # Each write is a TLS record of its own.
                    if url == self.https and seen.text:
                        self.assertEqual(seen.largest == 1, fault["kind"] == "drip")
                    self.assertEqual(seen.text.encode(), self.cloud.requests()[-1].answer)
                    self.assertEqual(send("POST", url + "/token", "x=y").status, 400)

    def test_stalled_requests_go_on_when_it_ends(self):
        with self.cloud.fault("stall", times=1):
            stalled = self.connect(self.http)
            stalled.write("POST /authorize HTTP/1.1\r\nContent-Length: 8\r\n\r\nuser=ann")
            programs.wait_until(self.cloud.requests)
            self.assertEqual(send("GET", self.http + "/authorize").status, 200, "others are served")
            self.assertEqual(self.cloud.state()["users"], [], "the stalled request was handled")
            self.assertIsNone(self.cloud.requests()[0].answer)
        answer = stalled.read_until("}")
        self.assertTrue(answer.startswith("HTTP/1.1 200 OK\r\n"))
        self.assertEqual(answer.encode(), self.cloud.requests()[0].answer)
        self.assertEqual(len(self.cloud.state()["users"]), 1)


class Page(CloudTest):
    def test_streams_tell_what_changes_without_secrets(self):
        empty = '"requests":[]}\n\n'
        pages = [self.connect(self.api) for _ in range(3)]
        for page in pages:
            page.write(f"GET /api/events HTTP/1.1\r\nHost: {self.api[7:]}\r\n\r\n")
        page, _, closed_page = pages
        closed_page.read_until(empty)
        closed_page.socket.close()
        begin = page.read_until(empty)
        self.assertRegex(begin, "(?s)Content-Type: text/event-stream\r\n.*event: state\ndata: {")
        code = self.cloud.code("<ann>")
        state = page.read_until("\n\n")
        self.assertIn(f'"short":"{code[:4]}…"', state)
        self.assertNotIn(code, state)
        for _ in range(200):
            send("POST", self.http + "/token", "x=y")
        page.read_until('"number":200,')
        self.cloud.forget_requests()
        page.read_until('"oldest":201,"requests":[]}\n\n')


class Program(programs.TestCase):
    def test_accounts_and_gateways_survive_a_restart(self):
        state = self.folder / "state"
        form = "client_id=a&client_secret=b&grant_type="

        def token(cloud, grant):
            return send("POST", cloud.urls["http"] + "/token", form + grant)
        with programs.Cloud("--state", state, "--gateway", "AABB", "--refresh-lifetime=60",
                            "--rotation=grace=60") as cloud:
            old = re.search('"refresh_token":"([0-9a-f]+)"', token(
                cloud, "authorization_code&code=" + cloud.code("ann")).text)[1]
            token(cloud, "refresh_token&refresh_token=" + old)
            code = cloud.code("ann")
            users = cloud.state()["users"]
            cloud.send_signal(signal.SIGTERM)
            self.assertEqual((cloud.wait(programs.PATIENCE), cloud.stdout.read()), (0, b""))
        self.assertEqual(programs.mode(state), "0o600")
        with programs.Cloud("--state", state) as cloud:
            shown = cloud.state()
            self.assertEqual([user["guid"] for user in shown["users"]], [user["guid"] for user in users])
            self.assertIn("PEER-AABB", str(shown["devices"]))
            self.assertEqual(token(cloud, f"authorization_code&code={code}").status, 200)
            cloud.settings(rotation="grace=60", refresh_lifetime=60)
            self.assertEqual(token(cloud, f"refresh_token&refresh_token={old}").status, 200)
            cloud.advance_clock(61)
            self.assertEqual(token(cloud, f"refresh_token&refresh_token={old}").status, 400)

    def test_a_reset_is_like_a_start_with_the_same_options(self):
        scenario = self.write("scenario", '[{"kind":"drip","path":"/token"},{"kind":"stall"},{"kind":"refuse"}]')
        with programs.Cloud("--state", self.folder / "state", "--scenario", scenario, "--gateway", "AABB",
                            "--rotation=grace=7", "--refresh-lifetime=9") as cloud:
            look = [f"/api/{name}" for name in ("state", "settings", "requests")]
            fresh = [cloud.ask(path) for path in look]
            self.assertEqual([fault["kind"] for fault in fresh[0]["faults"]], ["drip", "stall"])
            self.assertTrue(fresh[0]["is_refusing"])
            self.assertEqual((fresh[1]["rotation"], fresh[1]["refresh_lifetime"]), ("grace=7", 9))
            page = self.enterContext(Connection(cloud.urls["api"]))
            page.write(f"GET /api/events HTTP/1.1\r\nHost: {cloud.urls['api'][7:]}\r\n\r\n")
            cloud.ask("/api/faults?kind=refuse", method="DELETE")
            stalled = self.enterContext(Connection(cloud.urls["http"]))
            stalled.write("POST /authorize HTTP/1.1\r\nContent-Length: 8\r\n\r\nuser=ann")
            page.read_until('"number":1,')
            cloud.code("bob")
            cloud.settings(rotation="never", refresh_lifetime=0)
            cloud.advance_clock(5)
            cloud.ask("/api/faults", {"kind": "drip"})
            cloud.reset()
            self.assertEqual(stalled.read_until(), "")
            self.assertEqual([cloud.ask(path) for path in look], fresh)
            page.read_until('{"from_start":true,"oldest":1,"requests":[]}\n\n')
            self.assertNotIn("bob", (self.folder / "state").read_text())
            cloud.ask("/api/faults", method="DELETE")
            send("GET", cloud.urls["http"] + "/nowhere")
            self.assertEqual(cloud.requests()[0].number, 1)

    def test_start_says_in_one_line_what_is_wrong(self):
        broken = self.write("state", "{}")
        cut_off = self.write("cut", '{"users": {\n"a')
        faults = self.write("faults", '[{"kind":"drip"},{"kind":"drop"}]')
        with programs.Cloud() as running:
            for status, error, *options in (
                    (1, "Address already in use", "--port", running.urls["http"].rpartition(":")[2]),
                    (1, "nowhere: not an IP address", "--address", "nowhere"),
                    (1, "Cannot assign requested address", "--address", "192.0.2.1"),
                    (1, "/state: not a state file", "--state", broken),
                    (1, "/cut: not a state file", "--state", cut_off),
                    (1, "/: Is a directory", "--state", f"{self.folder}/"),
                    (1, "/none/state: No such file or directory", "--state", self.folder / "none/state"),
                    (1, "/faults: fault 2: unknown member or bad value: kind", "--scenario", faults),
                    (1, "/state: not a JSON array of faults", "--scenario", broken),
                    (1, "/: Is a directory", "--scenario", f"{self.folder}/"),
                    (1, "/none: No such file or directory", "--scenario", self.folder / "none"),
                    (2, "--rotation: not a value of it: grace", "--rotation", "grace"),
                    (2, "70000", "--port", "70000"), (2, "--port", "--port"), (2, "--nothing", "--nothing"),
                    (2, "stray", "stray")):
                with self.subTest(error):
                    ended = programs.run("qorn-devcloud", *options)
                    self.assertEqual((ended.status, ended.output), (status, ""))
                    self.assert_one_line(ended.errors, "qorn-devcloud: ", error)
        self.assertEqual(os.path.getsize(broken), 2, "overwritten")
