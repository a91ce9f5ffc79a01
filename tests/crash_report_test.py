"""A program that dies in a test says where."""

import shutil
import signal
import subprocess

import programs


class CrashReport(programs.TestCase):
    def test_names_the_signal_and_shows_each_thread(self):
        with programs.Process("qorn-devcloud", "--port", "0", "--https-port", "0", "--print-urls",
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as cloud:
            cloud.stdout.readline()  # It runs.
            cloud.send_signal(signal.SIGABRT)
            text = cloud.communicate(timeout=programs.PATIENCE)[1].decode()
        self.assertEqual(cloud.returncode, -signal.SIGABRT)
        self.assertIn(f"== process {cloud.pid}: Aborted", text)
        self.assertIn("gdb is not installed" if shutil.which("gdb") is None else "Thread 1 ", text)
