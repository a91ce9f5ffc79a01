"""How the gateway starts, and when it refuses to."""

import pathlib
import string

import programs
from gateway_test_case import FAKE, GatewayTestCase

CONFIG = "<qorn_storage_path>{}</qorn_storage_path><account_db_path>{}</account_db_path>"


def run(*arguments, **options):
    return programs.run("qorn-gateway", *arguments, **options)


class Start(GatewayTestCase):
    def read_cases(self, part):
        for name, text in {"broken.xml": "<config>\n<a>1</b>\n</config>", "empty": "",
                           "root.xml": "<settings/>", "text": "no library and no database" + 100 * " "}.items():
            self.write(name, text)
        (self.folder / "folder").mkdir()
        (self.folder / "link").symlink_to("one")
        names = {"folder": self.folder, "library": programs.LIBRARIES, "good": f"--config {self.folder}/config.xml"}
        cases = pathlib.Path("start_cases.txt").read_text().split("\n\n")[part]
        return [case.split(" |") for case in string.Template(cases).substitute(names).splitlines() if " |" in case]

    def test_answers_version_and_help(self):
        self.assertEqual(run("--version"), (0, "qorn-gateway 0.2.0\n", ""))
        self.assertIn("Exit status", run("--help").output)

    def test_names_what_is_wrong_in_one_line_and_exits_with_2(self):
        for options, named in self.read_cases(1):
            with self.subTest(options):
                status, output, errors = run(*options.split())
                self.assertEqual((status, output), (2, ""))
                self.assert_one_line(errors, "qorn-gateway: ", *named.split())

    def test_says_what_is_wrong_with_the_database_and_runs(self):
        for places, finding in self.read_cases(2):
            with self.subTest(places):
                self.configure(CONFIG.format(*places.split()))
                ended = programs.run(*self.command)
                self.assertEqual((ended.status, ended.output), (0, ""))
                self.assertRegex(ended.errors, f"^qorn-gateway:{finding}.*\n$" if finding else "^$")

    def test_reads_the_shipped_configuration_and_appends_to_a_log_that_nobody_else_reads(self):
        log, size = self.folder / "log", 0
        for _ in range(2):
            ended = run("--log", log, *FAKE, umask=0)
            self.assertEqual((ended.status, ended.errors), (0, ""))
            self.assertGreater(log.stat().st_size, size)
            size = log.stat().st_size
        self.assertEqual(programs.mode(log), "0o600")

    def test_gives_the_account_component_its_log_level(self):
        for levels, lines in (("LOG_VERBOSE LOG_INTERNAL_DETAILED_INFO LOG_INTERNAL_INFO LOG_INFO log_error", 2),
                              ("LOG_WARNING LOG_ERROR", 1), ("LOG_ERROR_REPORT LOG_FATAL", 0)):
            for level in levels.split():
                self.configure(f"<account_log_level>{level}</account_log_level>")
                log = self.folder / level
                run("--config", self.folder / "config.xml", "--log", log, "--keep-going", text="sign-out x\n")
                found = [line for line in ("#account#SignOut#  SignOutStart", "#account#SignOut#  SignOutEndInvalid")
                         if line in log.read_text()]
                self.assertEqual(len(found), lines, level)
