import signal

import programs


class CloudProgram(programs.TestCase):
    def test_prints_its_urls_and_runs_until_a_signal(self):
        for ending in (signal.SIGINT, signal.SIGTERM):
            with programs.Cloud("--gateway", "AABB", "--gateway", "CCDD") as cloud:
                self.assertEqual(list(cloud.urls), ["http", "https", "api"])
                self.assertIn("<html", programs.ask(cloud.urls["https"] + "/authorize"))
                for kind in ("http", "api"):
                    self.assertRegex(cloud.urls[kind], "^http://127.0.0.1:[0-9]+$")
                    self.assertIn("CCDD", programs.ask(cloud.urls[kind] + "/api/state"))
                cloud.send_signal(ending)
                self.assertEqual((cloud.wait(programs.PATIENCE), cloud.stdout.read()), (0, b""))

    def test_gives_bad_options_one_line(self):
        for arguments in ("--port 70000", "--port", "--nothing", "--address nowhere", "stray"):
            with self.subTest(arguments):
                status, output, errors = programs.run("qorn-devcloud", *arguments.split())
                self.assertIn(status, (1, 2))
                self.assertEqual(output, "")
                self.assert_one_line(errors, "qorn-devcloud: ")
