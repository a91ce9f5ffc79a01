"""The doctor's findings on a sound gateway after each of the changes in doctor_cases.txt."""

import collections
import email.utils
import json
import os
import pathlib
import re
import sqlite3
import subprocess
import time

import programs

STATES = ("good", "warning", "bad")


class Patient:
    def __init__(self, folder, cloud):
        os.umask(0o077)
        self.folder = folder
        self.names = {"$config": f"{folder}/config.xml", "$data": f"{folder}/data", "$cloud": cloud.urls["http"],
                      "$https": cloud.urls["https"], "\\x1b": "\x1b", "\\xff": "\udcff",
                      "$past": email.utils.formatdate(time.time() - 1000, usegmt=True)}
        self.config = programs.write_config(folder, cloud)
        made = programs.run("qorn-gateway", "--config", self.config, text=f"create-user ann {cloud.code('ann')}")
        assert made.status == 0, made
        self.options, self.environment = ["--json"], dict(os.environ)
        self.steps = {
            "edit": self.edit,
            "run": lambda text: subprocess.run(text, shell=True, cwd=folder, check=True),
            "sql": sqlite3.connect(folder / "data/account.db", isolation_level=None).executescript,
            "clock": lambda text: cloud.advance_clock(int(text)),
            "fault": lambda text: cloud.ask("/api/faults", json.loads(text)),
            "proxy": lambda text: self.environment.update(http_proxy=text),
            "try-refresh": lambda _: self.options.append("--try-refresh")}

    def spoil(self, line):
        for name, value in self.names.items():
            line = line.replace(name, value)
        step, _, text = line.partition(" ")
        self.steps[step](text)

    def edit(self, text):
        old, new = text.encode(errors="surrogateescape").split(b" -> ")
        assert old in self.config.read_bytes(), old
        self.config.write_bytes(self.config.read_bytes().replace(old, new))

    def files(self):
        return {path: (found.st_mode, found.st_size, found.st_mtime_ns)
                for path in self.folder.rglob("*") for found in [path.stat()]}

    def examine(self):
        """The doctor's findings as lines, STATE NAME VALUE | ADVICE. Checks its summary and exit status."""
        before = self.files()
        ended = programs.run("qorn-gateway", "doctor", "--config", self.config, *self.options, env=self.environment)
        assert "--try-refresh" in self.options or self.files() == before, self.files()
        *findings, summary = map(json.loads, ended.output.splitlines())
        text = ""
        for finding in findings:
            value = "-" if finding["value"] is None else finding["value"]
            text += f"{finding['state']} {finding['name']} {value} | {finding['advice']}\n"
        for name, real in self.names.items():
            text = text.replace(real, name)
        text = re.sub("-10[0-9]0 s", "-1000 s", text)  # On a busy machine $past is a little older.
        count = collections.Counter(finding["state"] for finding in findings)
        assert summary == {"type": "summary", **{state: count[state] for state in STATES}}, summary
        assert ended.status == (3 if count["bad"] else 1 if count["warning"] else 0), ended
        return text.splitlines()


class Doctor(programs.TestCase):
    def test_finds_what_the_cases_tell(self):
        for number, case in enumerate(pathlib.Path("doctor_cases.txt").read_text().split("\n== ")[1:]):
            title, *lines = case.split("\n")
            expected = [line for line in lines if line.split(" ")[0] in STATES]
            with self.subTest(title), programs.Cloud() as cloud:
                patient = Patient(self.folder / str(number), cloud)
                for step in filter(None, lines):
                    if step not in expected:
                        patient.spoil(step)
                found = [line for line in patient.examine() if line in expected or not line.startswith("good ")]
                self.assertEqual(found, expected)

    def test_writes_for_people_and_programs(self):
        for case in pathlib.Path("doctor_output.txt").read_text().split("== ")[1:]:
            arguments, output = case.split("\n", 1)
            self.assertEqual(programs.run("qorn-gateway", *arguments.split()), (3, output, ""))
