"""Backup, restore, retirement and report, against a development cloud."""

import os
import sqlite3
import subprocess

import programs


class Maintenance(programs.TestCase):
    def setUp(self):
        super().setUp()
        os.umask(0o077)
        self.cloud = self.enterContext(programs.Cloud())
        self.config = programs.write_config(self.folder, self.cloud)
        self.database = self.folder / "data/account.db"
        self.type(f"create-user ann {self.cloud.code('ann')}", f"create-user bob {self.cloud.code('bob')}",
                  "add-friend-to-db $user_uuid eve g Home DDEEFF PEER-DDEEFF-1",
                  "add-friend-to-db $user_uuid ann g Home AABBCC PEER-AABBCC-1")

    def type(self, *lines):
        ended = programs.run("qorn-gateway", "--config", self.config, text="\n".join(lines))
        self.assertEqual(ended.status, 0, ended)
        return ended.output

    def run_command(self, *words, **options):
        return programs.run("qorn-gateway", words[0], "--config", self.config, *words[1:], **options)

    def refuse(self, *words):
        """The command changes nothing and says why in one line, which is returned."""
        before = self.files()
        status, output, errors = self.run_command(*words)
        self.assertEqual((status, output), (1, ""), errors)
        self.assert_one_line(errors, "qorn-gateway: ")
        self.assertEqual(self.files(), before)
        return errors

    def files(self):
        return {path: (found.st_ino, found.st_mode, found.st_size, found.st_mtime_ns)
                for path in self.folder.rglob("*") for found in [path.lstat()]}

    def secrets(self):
        return [text for row in self.rows("SELECT accessToken, refreshToken FROM Users") for text in row]

    def rows(self, statement):
        return sqlite3.connect(self.database).execute(statement).fetchall()

    def test_restores_what_it_backed_up_and_signing_in_heals_it(self):
        copy, tokens = self.folder / "copy", self.secrets()
        with programs.Process("qorn-gateway", "--config", self.config, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL) as gateway:
            gateway.stdin.write(b"say ready\n")
            gateway.stdin.flush()
            gateway.stdout.readline()
            self.assertIn("another gateway", self.refuse("backup", "--with-tokens", copy))
            made = self.run_command("backup", copy)
            self.assertEqual(made, (0, f"{copy}: 2 users, 2 friends, without tokens\n", ""))
            self.assertIn("another gateway", self.refuse("restore", copy))
            gateway.communicate()
        self.assertEqual(programs.mode(copy), "0o600")
        self.assertIn("--force", self.refuse("backup", copy))
        self.assertEqual(self.run_command("backup", "--force", "--with-tokens", self.folder / "full").status, 0)
        for text in tokens:
            self.assertNotIn(text.encode(), copy.read_bytes())
            self.assertIn(text.encode(), (self.folder / "full").read_bytes())
        names = subprocess.run(["tar", "-tf", copy], capture_output=True, check=True).stdout
        self.assertEqual(names, b"manifest.json\naccount.db\n")

        self.type("do-factory-reset")
        self.config.write_text(self.config.read_text().replace("AABBCC", "DDEEFF"))
        restored = self.run_command("restore", copy)
        self.assertRegex(restored.output, f"""^{self.database}: restored as it was at .*Z, .*, without tokens
The replaced database is {self.database}.before-restore
Each user has to sign in with a new code.
The copy was made on a gateway with the address AABBCC; this one has DDEEFF.
To be registered anew, by removing and creating them: ann, bob
Friends stored here with the old peer ID: ann \\(of bob\\)
Friends whose gateways know this one by its old peer ID: eve \\(of bob\\)
$""")
        self.type(f"sign-in ann {self.cloud.code('ann')}", "refresh-access-token ann")
        with open(self.folder / "piped", "wb") as pipe:
            self.assertEqual(self.run_command("backup", "-", stdout=pipe).errors, "")
        with open(self.folder / "full", "rb") as pipe:
            process = subprocess.run([programs.BUILD / "bin/qorn-gateway", "restore", "--config", self.config, "-"],
                                     stdin=pipe, capture_output=True)
        self.assertEqual((process.returncode, self.secrets()), (0, tokens))
        self.assertEqual(self.run_command("restore", self.folder / "piped").status, 0)

    def test_reads_and_replaces_files_alone(self):
        os.mkfifo(self.folder / "pipe")
        (self.folder / "link").symlink_to("config.xml")
        for name, why in (("none", "No such file"), ("pipe", "not a file"), ("link", "symbolic link"),
                          ("data", "not a file"), ("config.xml", "not a copy")):
            self.assertIn(why, self.refuse("restore", self.folder / name))
        for name in ("pipe", "link", "data"):
            self.assertIn("not a file", self.refuse("backup", "--force", self.folder / name))
        self.assertIn("No such file", self.refuse("backup", self.folder / "none/copy"))

    def test_retires_cloud_database_and_files(self):
        def registered():
            return len(self.cloud.state()["devices"][0]["users"])

        places = {**os.environ, "XDG_STATE_HOME": f"{self.folder}/state"}
        traces = ["data/keeper.json", "data/account.db.before-restore", "state/qorn/history", "log", "log.1",
                  "log-20261126.gz"]
        (self.folder / "state/qorn").mkdir(parents=True)
        for name in traces + ["log.txt"]:
            self.write(name, "ann")
        retire = ("retire", "--log", self.folder / "log")
        self.cloud.advance_clock(10 ** 6)  # No access token is good any longer.
        self.cloud.ask("/api/faults", {"kind": "status", "status": 503, "path": "/device/deleteuserdevice"})
        kept = self.run_command(*retire, env=places)
        # The order is that of their UUIDs.
        self.assertRegex(kept.output, "^(ann|bob): removed, also from the cloud\n$")
        user = {"a": "bob", "b": "ann"}[kept.output[0]]
        self.assertRegex(kept.errors, f"^qorn-gateway: the cloud keeps {user}: RemoveUser answered 16.*\n.*again.*\n$")
        self.assertEqual((kept.status, registered(), self.rows("SELECT userId FROM Users")), (1, 1, [(user,)]))

        done = self.run_command(*retire, env=places)
        self.assertEqual((done.status, done.errors), (0, ""))
        self.assertEqual(done.output, f"{user}: removed, also from the cloud\nThe database is empty.\n" + "".join(
            f"{self.folder}/{name}: removed\n" for name in [traces[1], traces[0], *traces[2:4], traces[5], traces[4]]))
        self.assertEqual((registered(), self.rows("SELECT * FROM Users, Friends")), (0, []))
        self.assertEqual(self.run_command(*retire, env=places), (0, "The database is empty.\n", ""))
        self.assertEqual((self.folder / "log.txt").read_text(), "ann")

        self.type(f"create-user ann {self.cloud.code('ann')}")
        (self.folder / "audit").symlink_to(self.write("elsewhere", "ann"))
        done = programs.run("qorn-gateway", "--audit", self.folder / "audit", "retire", "--local", "--config",
                            self.config, env=places)
        self.assertEqual((done.status, done.output.count("removed")), (0, 2), done)
        self.assertFalse((self.folder / "elsewhere").exists())
        self.assertEqual(registered(), 1)

    def test_reports_without_private_values(self):
        carol, log, audit = "carol@example.com", self.folder / "log", self.folder / "audit"
        programs.run("qorn-gateway", "--config", self.config, "--log", log, "--audit", audit,
                     text=f"create-user {carol} {self.cloud.code(carol)}\nremove-user {carol} {carol}\n"
                          "add-friend-to-db $user_uuid gone g Home 02:00:5E:10:00:01 PEER-9")
        tokens = self.secrets()
        with open(log, "a") as lines:
            lines.write(f"cannot user=ann&x=%61nn%40 Carol%40EXAMPLE.com {tokens[0]}x%3D{tokens[1].upper()} "
                        "00:11:22:aa:bb:cc\n" + "x" * 4087 + " removed.person@example.com CAROL\\u0040example.com\n")
        private = tokens + [carol, "eve", "gone", "PEER-DDEEFF-1", "AABBCC", "secret-of-client", "secr…", "00:11:22",
                            "person", "carol"]
        private += [text for row in self.rows("SELECT userUuid, userGuid FROM Users") for text in row]
        report = ("report", "--log", log, "--audit", audit, "--bus", "unix:path=/none")
        made = self.run_command(*report)
        self.assertEqual((made.status, made.errors), (0, ""))
        for value in private + ["ann", "bob"]:
            self.assertNotRegex(made.output.lower(), f"\\b{value.lower()}\\b")
        for line in ("qorn-gateway 0.2.0", "OAuth_AsClient_app_secret: secret-1", "users: 2", "not asked: ",
                     "cannot user=user-[12]&x=user-[12]%40 user-3 token-[1-4]x%3Dtoken-[1-4] address-[2-9]"):
            self.assertRegex(made.output, f"(?m){line}")
        self.assertRegex(made.output, '"user_id":"user-3"')

        with open(log, "a") as lines:
            lines.write("carol%2540example.com")
        self.assertEqual(self.run_command(*report, self.folder / "report").status, 3)
        self.assertFalse((self.folder / "report").exists())
