"""Searches what a gateway prints and leaves in files for the secrets of the run, which the cloud knows."""

import pathlib
import re
import sqlite3

import programs

WRONG = pathlib.Path("wrong.qorn").resolve()
PIECE = 10  # So many bytes of a secret do not occur elsewhere by chance.


class Secrets(programs.TestCase):
    def setUp(self):
        super().setUp()
        self.cloud = self.enterContext(programs.Cloud("--gateway", "AABBCC"))
        self.config = programs.write_config(self.folder, self.cloud, account_log_level="LOG_VERBOSE",
                                            account_enable_MIRLO_network_setting="on")
        self.command = ("qorn-gateway", "--config", self.config, "--log", self.folder / "log", "--audit",
                        self.folder / "audit")
        self.issued = []

    def secrets(self):
        """The client secret, the fixed password, all issued codes, and codes and tokens from the wire."""
        wire = b"\n".join(part for seen in self.cloud.requests() for part in (seen.raw, seen.answer))
        found = re.findall(b'(?:code|refresh_token|access_token|oauth_token)"?[=:] *"?([A-Za-z0-9_-]{10,})', wire)
        self.assertGreater(len(found), 10)
        return {b"secret-of-client", b"mivu5830", *self.issued, *found}

    def issue_code(self, user):
        self.issued.append(self.cloud.code(user).encode())
        return self.issued[-1].decode()

    def assert_none(self, what, text, secrets):
        self.assertTrue(text, what)
        for secret in secrets:
            for begin in range(max(1, len(secret) - PIECE + 1)):
                at = text.find(secret[begin:begin + PIECE])
                self.assertEqual(at, -1, f"{secret} in {what}: {text[max(0, at - 60):at + 60]}")

    def test_are_in_no_output_log_or_audit_of_scripts(self):
        tour = programs.run(*self.command, "--script", programs.SOURCE / "gateway/console/tour.qorn")
        self.assertEqual(tour.status, 0, tour)
        for kind, path in ("truncate_after", "/token"), ("reset_after", "/token"), ("status", "/device/adduserdevice"):
            self.cloud.ask("/api/faults", {"kind": kind, "path": path, "bytes": 250})
        runs = [programs.run(*self.command, *words, "--keep-going", "--script", WRONG) for words in ([], ["--json"])]
        self.assertEqual([run.status for run in runs], [1, 1])
        runs += tour, programs.run("qorn-gateway", "doctor", "--config", self.config)
        printed = "".join(run.output + run.errors for run in runs)
        self.assertNotRegex(printed, "4[0-9a-f]{7}-[0-9a-f]{4}-4.*peer")
        self.assert_none("what was printed", printed.encode(), self.secrets())
        for name in ("log", "audit"):
            self.assert_none(name, (self.folder / name).read_bytes(), self.secrets())

    def test_are_in_no_file_of_a_console_and_files_are_the_owners_alone(self):
        """Typed in full at a console that also shows them in full."""
        database, journal = self.folder / "data/account.db", self.folder / "data/account.db-journal"
        console = self.enterContext(programs.Terminal(*self.command, "--show-secrets",
                                                      XDG_STATE_HOME=str(self.folder)))
        console.wait_for("qorn> ")

        def enter(line, answer):
            console.type(line + "\n")
            console.wait_for(answer)
            return console.wait_for("qorn> ")

        for user in ("ann@x", "bob@x"):
            enter(f"create-user {user} {self.issue_code(user)}", "create-user: 1")
            enter(f"sign-in {user} {self.issue_code(user)}", "sign-in: 1")
            enter(f"refresh-access-token {user}", "refresh-access-token: 1")
            enter("sign-in-alt qornsystem mivu5830", "sign-in-alt: 1")
            enter(f"creat {user} {self.issue_code(user)}", "unknown command")
        invitation = enter("add-friend-candidate $user_uuid f@x p", "friend_auth_code: ")[:36]
        enter(f"add-friend-request f@x {invitation} code m d a", "add-friend-request")
        enter("remove-user bob@x bob@x", "remove-user: 1")
        enter("get-user-uuid-from-user-id ann@x", "id: 1")

        other = sqlite3.connect(database, isolation_level=None)
        self.addCleanup(other.close)
        other.execute("BEGIN")
        tokens = other.execute("SELECT accessToken, refreshToken FROM Users").fetchone()
        console.type("set-user-info-by-type $user_uuid 201 Other\n")  # Waits for the other transaction.
        programs.wait_until(journal.exists)
        self.assertEqual(programs.mode(journal), "0o600")
        other.execute("COMMIT")
        console.wait_for("type: 1")
        console.wait_for("qorn> ")
        console.finish("\x04")

        secrets = {*self.secrets(), invitation.encode()}
        for name in ("log", "audit", "qorn/history"):
            self.assertEqual(programs.mode(self.folder / name), "0o600", name)
            self.assert_none(name, (self.folder / name).read_bytes(), secrets)
        # The database contains the valid tokens only, none of earlier ones or of removed users.
        held = {token.encode() for token in tokens}
        self.assertLess(held, secrets)
        self.assertEqual(programs.mode(database), "0o600")
        self.assert_none("the database", database.read_bytes(), secrets - held)
