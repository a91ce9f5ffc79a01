"""Scripts, pipes, terminals and signals, with a component that answers from memory."""

import pathlib
import re
import signal
import socket

import programs
from gateway_test_case import GatewayTestCase


class Script(GatewayTestCase):
    def test_runs_to_its_end_with_events_before_answers(self):
        transcript = pathlib.Path("script.transcript").read_text()
        script, output, errors, audit = re.split("^== .*\n", transcript, flags=re.M)[1:]
        self.write("good.qorn", script[:-1].replace("\\r", "\r"))
        ended = programs.run(*self.command, "--audit", "audit", "--keep-going", "--script", "good.qorn", cwd=self.folder)
        self.assertEqual(ended, (1, output, errors))
        self.assertEqual(self.audit(), audit)

    def test_stops_at_the_first_failure_unless_it_keeps_going(self):
        script = self.write("bad.qorn", "say one\nnonsense\nsay two\n")
        error = f'qorn-gateway: {script}:2: unknown command "nonsense"; "help" lists them all\n'
        for options, output in ((), "one\n"), (("--keep-going",), "one\ntwo\n"):
            self.assertEqual(programs.run(*self.command, *options, "--script", script), (1, output, error))

    def test_may_be_a_pipe_with_no_endless_line(self):
        error = "qorn-gateway: standard input:1: the line is too long\n"
        for text, expected in (("say one\nquit\nsay two\n", (0, "one\n", "")),
                               ("a" * (9 << 20) + "\nsay next", (1, "next\n", error))):
            self.assertEqual(programs.run(*self.command, "--keep-going", text=text), expected)

    def test_notes_a_line_that_is_no_command_in_the_audit_without_its_words(self):
        programs.run(*self.command, "--keep-going", "--audit", self.folder / "audit", text="sing-in x y\nsay 'x\n")
        self.assertEqual(self.audit(), 2 * '{"type":"command","command":"","message":"refused"}\n')

    def test_finds_help_about_each_command_and_alias_once(self):
        names = re.findall("^  ([a-z-]+)", programs.run(*self.command, text="help\n").output, re.M)
        helped = programs.run(*self.command, text="".join(f"help {name}\n" for name in names))
        self.assertEqual((helped.status, helped.errors), (0, ""))
        self.assertNotRegex(helped.output, "Undefined| \n")
        names += re.findall("Alias: (.*)", helped.output)
        self.assertGreater(len(names), 43)
        self.assertEqual(len(names), len(set(names)))

    def test_fails_when_its_output_is_lost_or_it_is_a_folder(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(programs.run(*self.command, text="say one\n", stdout=full).status, 1)
        self.assertEqual(programs.run(*self.command, "--script", self.folder),
                         (1, "", f"qorn-gateway: {self.folder}: cannot be read: Is a directory\n"))


class SignalInALongOperation(GatewayTestCase):
    def test_lets_it_finish_and_the_second_time_ends_the_program(self):
        script = self.write("busy.qorn", f"search-user {self.pipe} x\nsay later\n")
        finished = "search-user: 1 Success\r\nqorn-gateway: stopping: waiting for the components to finish\r\n"
        for second, last in ((0, finished), (signal.SIGTERM, "")):
            gateway = self.start("--script", script)
            with self.subTest(second), open(self.pipe, "wb") as writer:  # Opens once the command reads it.
                gateway.send_signal(signal.SIGINT)
                self.assertEqual(gateway.wait_for("qorn-gateway: stopping: waiting for search-user\r\n"), "")
                gateway.send_signal(second) if second else writer.close()
                self.assertEqual(gateway.finish(status=-second), last)


class Prompt(GatewayTestCase):
    def setUp(self):
        super().setUp()
        self.console = self.start("--audit", self.folder / "audit")
        self.console.wait_for("qorn> ")

    def enter(self, keys, *shown):
        self.console.type(keys)
        for text in (*shown, "qorn> "):
            self.console.wait_for(text)

    def test_edits_lines_keeps_history_and_goes_on_after_a_failure(self):
        self.enter("check-session-validation 22\b\n", "answered 2 (Invalid Session ID)")  # Backspace deletes a digit.
        self.enter("say é한\n", "\né한\r\n")
        self.enter("\x10\x10\x7f5\n", "check-session-validation answered 5")  # Two lines up, with another digit.
        self.console.finish("\x04")

    def test_drops_the_line_at_ctrl_c_and_ends_at_a_second_one_on_an_empty_line(self):
        self.enter("say never\x02\x02\x03", "er^C\r\n")
        self.enter("say on\n", "\non\r\n")
        self.enter("\x03", '"quit" or Ctrl-D ends the gateway')
        # On a busy machine any two of them may be over two seconds apart.
        self.assertNotIn("\nnever", self.console.finish(20 * "\x03"))

    def test_stops_in_order_without_running_the_unfinished_line(self):
        self.console.type("say never")
        self.console.wait_for("say never")
        self.console.send_signal(signal.SIGINT)
        output = self.console.finish()
        self.assertRegex(output, "(?s)qorn-gateway: stopping\r\n.*waiting for the components to finish")
        self.assertNotIn("\nnever", output)

    def test_is_drawn_again_below_an_event_that_comes_by_itself(self):
        self.enter(f"sign-out {self.pipe}\n", "sign-out: 1 Success")
        open(self.pipe, "wb").close()
        self.enter("", "\r\x1b[Kevent kEventAccountSignOut\r\n", "session_id: ended\r\n")

    def test_keeps_its_history_without_secrets_and_reads_a_broken_one(self):
        for line in ("say one two\n", "sign-in alice secret-code\n", "request-cod alice\n"):
            self.enter(line)
        self.console.finish("\x04")
        history = self.folder / "qorn/history"
        self.assertEqual((history.read_text(), programs.mode(history)), ("say one two\n", "0o600"))
        with history.open("a") as file:
            file.write("\x1b[2J\n" + "x" * (1 << 20) + "\n")
        self.console = self.start()
        self.console.wait_for("qorn> ")
        # The line is drawn with its prompt when it is fetched from the history.
        self.enter("\x10\n", "\none two\r\n")
        self.console.finish("\x04")

    def test_completes_commands_and_seen_ids(self):
        self.enter("check-s\t1\n", "check-session-validation: 1 Success")
        self.enter("info l\t", "  l1\r\n  l2\r\n")  # Read from the component at the start.
        self.enter("1\n", "get-user-information: 1 Success")

    def test_watches_until_enter(self):
        self.console.type("watch\n")
        self.console.wait_for("press Enter to end.\r\n")
        self.enter("\n")
        self.enter("say on\n", "\non\r\n")

    def test_opens_log_and_audit_anew_at_a_hangup(self):
        for name in ("log", "audit"):
            (self.folder / name).rename(self.folder / (name + ".1"))
        self.console.send_signal(signal.SIGHUP)
        programs.wait_until(lambda: self.enter("say on\n") or ((self.folder / "audit").exists() and self.audit()))
        self.assertTrue((self.folder / "log").exists())


class Files(GatewayTestCase):
    def test_keeps_log_and_audit_within_their_limit_with_one_older_file_each(self):
        (self.folder / "elsewhere").mkdir()
        (self.folder / "audit").symlink_to("elsewhere/audit")
        for _ in range(12):
            programs.run(*self.command, "--audit", self.folder / "audit", "--log-limit", "4KiB", text=10 * "say one\n")
        for name in ("log", "elsewhere/audit"):
            for file in (self.folder / name, self.folder / (name + ".old")):
                self.assertLess(1000, file.stat().st_size)
                self.assertLessEqual(file.stat().st_size, 4096)
                self.assertRegex(file.read_text(), r"\A[{\[](?s:.*)\n\Z")  # Whole lines.
        # It would be written over.
        refused = programs.run(*self.command, "--audit", self.folder / "log.old")
        self.assertEqual((refused.status, refused.errors.count("is the log file")), (2, 1))

    def test_says_once_that_little_space_is_left(self):
        # No file system has less of it.
        self.configure("<qorn_storage_path>/proc/</qorn_storage_path><account_db_path>a.db</account_db_path>")
        status = programs.run(*self.command, text="status\n").output
        self.assertIn("Free space      0 MiB: make room, or changes will be lost\n", status)
        log = (self.folder / "log").read_text()
        self.assertEqual(log.count("/proc has 0 MiB left: make room, or changes will be lost"), 1)


class Service(GatewayTestCase):
    def test_leaves_a_storage_folder_to_the_gateway_that_works_in_it(self):
        self.configure(f"<qorn_storage_path>{self.folder}/</qorn_storage_path><account_db_path>a.db</account_db_path>")
        first = self.start()
        first.wait_for("qorn> ")
        self.assertEqual(programs.run(*self.command), (
            2, "", f"qorn-gateway: another gateway works in the storage folder {self.folder}/\n"))
        first.finish("\x04")
        self.assertEqual(programs.run(*self.command).status, 0)

    def test_tells_its_manager_and_runs_without_input_until_a_signal(self):
        for name, address in ((str(self.folder / "notify"),) * 2, (f"@{self.folder}", f"\0{self.folder}")):
            with self.subTest(name), socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
                manager.settimeout(programs.PATIENCE)
                manager.bind(address)
                gateway = self.start("--daemon", NOTIFY_SOCKET=name)
                self.assertEqual(manager.recv(64), b"READY=1")
                gateway.send_signal(signal.SIGTERM)
                gateway.finish()

    def test_waits_at_its_start_as_long_as_its_address_says_until_a_signal(self):
        self.configure("<gateway_start_spread_seconds>86400</gateway_start_spread_seconds>"
                       "<account_device_physical_address_text>AABBCC</account_device_physical_address_text>")
        waits = "waiting 49471 s before the start"  # Stays the same in each version.
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.settimeout(programs.PATIENCE)
            manager.bind(str(self.folder / "notify"))
            gateway = self.start("--daemon", NOTIFY_SOCKET=str(self.folder / "notify"))
            self.assertEqual(manager.recv(128).decode(), f"STATUS={waits}\nEXTEND_TIMEOUT_USEC=49561000000")
            self.assertIn(waits, (self.folder / "log").read_text())
            gateway.send_signal(signal.SIGTERM)
            self.assertEqual(gateway.finish(), "qorn-gateway: stopping\r\n")
