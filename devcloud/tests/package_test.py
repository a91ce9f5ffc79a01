"""The Python package as other projects' tests use it."""

import os
import re
import subprocess

import programs


class Package(programs.TestCase):
    def run_pytest(self, **environment):
        page = (programs.SOURCE / "docs/test-with-the-cloud.md").read_text()
        self.write("test_example.py", re.search("(?s)```python\n(.*?)```", page)[1])
        return subprocess.run(["/usr/bin/python3", "-B", "-m", "pytest", "-pqorn_devcloud.pytest_plugin", self.folder],
                              cwd=self.folder, env={**os.environ, **environment}, text=True, capture_output=True)

    def test_runs_the_example_of_its_page(self):
        ended = self.run_pytest(http_proxy="http://127.0.0.1:1")
        self.assertRegex(ended.stdout, r"(?m)^=+ 3 passed in ", ended)

    def test_says_which_program_is_missing(self):
        ended = self.run_pytest(QORN_BUILD="", PATH="/nowhere")
        self.assertIn("there is no program qorn-devcloud on PATH: install the package", ended.stdout)
