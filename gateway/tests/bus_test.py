"""A gateway on a bus of the test's own, and qornctl."""

import os
import re
import subprocess
import xml.etree.ElementTree

import dbus
import dbus.bus

import bus_test_case
import programs

LOOKS = """get-user-uuid-from-user-id x
get-friend-uuid-from-friend-id-and-friend-peer-id x x x
get-all-users-uuid
get-user-info-by-type x 100
get-user-information x
get-all-friends-uuid x
get-friend-information x
get-session-info x
check-session-validation x
get-session-lifetime
get-network-setting-status
get-nts-server-info-and-peer-id
users
friends
metrics""".splitlines()
SIGN_INS = ["sign-in x x", "sign-in-alt x x", "sign-out x", "reset-count-for-session-maintenance x"]
MANAGES = """create-user x x
create-user-request x x
get-user-creation-request x x
remove-user x x
remove-user-request x x
search-user x x
set-user-info-by-type x 200 x
add-friend-to-db x x x x x x
add-friend-candidate x x x
add-friend-request x x x x x x
remove-friend-from-db x x x
remove-friend-request x x x
set-session-lifetime 30
parse-account-message x
refresh-access-token x
get-user-info-by-type x 104
do-factory-reset""".splitlines()
LINES = LOOKS + SIGN_INS + MANAGES

class Bus(bus_test_case.BusTestCase):
    def test_qornctl_does_what_the_console_does(self):
        none = self.ctl("users")
        self.assertEqual(none.status, 2)
        self.assert_one_line(none.errors, "qornctl: no gateway answers: ")
        gateway = self.start_gateway()
        made = self.ctl("create-user", "ann", self.cloud.code("ann"))
        self.assertRegex(made.output, "^create-user: 1 Success\n  user_uuid: [0-9a-f-]{36}\n$")
        self.assertRegex(self.ctl("users").output, "(?m)^ann +Default +Off ")
        self.assertRegex(self.ctl("--json", "users").output, '"user_id":"ann".*\n.*"user_id":"qornsystem"')
        failed = self.ctl("info", "nobody")
        self.assertEqual((failed.status, failed.errors.count("\n")), (1, 1))
        shown = self.ctl(text="in-alt ann ''\nstatus\nget-user-info-by-type $user_uuid 104\n")
        self.assertRegex(shown.output, r"Users +2\n(.*\n)*Sessions +1 open; (.*\n)*  value: [0-9a-f]{4}…")
        with programs.Process("qornctl", "--bus", self.bus.address, "watch", "60", stdout=subprocess.PIPE, bufsize=0) as watch:
            os.set_blocking(watch.stdout.fileno(), False)

            def hears():  # From some moment on.
                self.ctl("in-alt", "ann", "")
                return b"SignInAlt" in (watch.stdout.read() or b"")
            programs.wait_until(hears)
        heard = self.listen()
        self.ctl("set-session-lifetime", "5")
        programs.wait_until(lambda: "SessionLifetime" in heard.read_text())
        other = self.write("other.xml", "<config></config>")
        for address, *words in ((self.bus.address, "org.qorn.Accounts1", "another program has it"),
                                ("unix:path=/none", "unix:path=/none cannot be reached: No such file or directory")):
            refused = programs.run("qorn-gateway", "--config", other, "--bus", address, "--log", self.folder / "other",
                                   "--component", programs.LIBRARIES / "libqorn_gateway_fake_component.so")
            self.assertEqual(refused.status, 2)
            self.assert_one_line(refused.errors, "qorn-gateway: the ", *words)
        report = programs.run("qorn-gateway", "report", "--config", self.folder / "config.xml", "--bus", self.bus.address)
        self.assertRegex(report.output, r"== Running gateway\nVersion: 0\.2\.0\n(\w+: \d+\n){4}\n")
        self.assert_stops(gateway)

    def test_the_documented_tables_are_the_introspection(self):
        self.start_gateway()
        gateway = self.connect().get_object("org.qorn.Accounts1", "/org/qorn/Accounts1")
        rows = set()
        for interface in xml.etree.ElementTree.fromstring(
                gateway.Introspect(dbus_interface=dbus.INTROSPECTABLE_IFACE)).iterfind("interface"):
            group = interface.get("name").removeprefix("org.qorn.Accounts1.")
            for member in () if "." in group else (*interface.iterfind("method"), *interface.iterfind("signal")):
                cells = [", ".join(f"{arg.get('name')} `{arg.get('type')}`".replace(" `s`", "")
                                   for arg in member.iterfind("arg") if arg.get("direction") == direction)
                         for direction in (("in", "out") if member.tag == "method" else (None,))]
                rows.add((f"{group}.{member.get('name')}", *cells))
        page = (programs.SOURCE / "docs/bus.md").read_text()
        methods = re.findall(r"(?m)^\| `(\w+\.\w+)` \| [a-z-]+ \| (?:(.+) )?\| (?:(.+) )?\|$", page)
        signals = re.findall(r"(?m)^\| `(\w+\.\w+)` \| ([^|]+) \|$", page)
        self.assertEqual(rows, {*methods, *signals})

    def test_metrics_count_each_call_once(self):
        self.start_gateway("--metrics")
        self.ctl("create-user", "ann", self.cloud.code("ann"))
        self.ctl("--keep-going", text="in-alt ann ''\ncheck-session-validation x\ncheck-session-validation y\n")
        for _ in range(2):  # Reading them counts nothing but their own reading.
            text = self.ctl("metrics").output
            for sample in ('operations_total{operation="CreateUser",result="Success"} 1',
                           'operations_total{operation="CheckSessionValidation",result="Success"} 0',
                           'operations_total{operation="CheckSessionValidation",result="InvalidSessionId"} 2',
                           'operation_duration_seconds_count{operation="CheckSessionValidation"} 2',
                           'events_total{event="UserCreated"} 1', 'refused_calls_total{reason="no_right"} 0',
                           'open_sessions 1'):
                self.assertIn(f"\nqorn_{sample}\n", text)
            for gauge in "qorn_cloud_last_answer_age_seconds", "qorn_database_size_bytes", "process_start_time_seconds":
                self.assertRegex(text, rf"\n{gauge} [0-9.e+-]*[1-9]")
            self.assertNotIn('"ann"', text)

    def test_metrics_of_console_and_other_components_are_kept_only_when_asked_for(self):
        command = ("qorn-gateway", "--config", programs.write_config(self.folder, self.cloud), "--log", self.folder / "log",
                   "--component", programs.LIBRARIES / "libqorn_account.so",
                   "--component", programs.LIBRARIES / "libpresence_watch.so")
        text = "sign-in-alt qornsystem mivu5830\nmetrics\n"
        counted = programs.run(*command, "--metrics", text=text).output
        for operation in "SignInAlt", "CheckSessionValidation":  # The console's, the component's.
            self.assertIn(f'\nqorn_operations_total{{operation="{operation}",result="Success"}} 1\n', counted)
        self.assert_one_line(programs.run(*command, text=text).errors, "qorn-gateway: standard input:2: metrics: ")

    def test_rights_are_the_callers(self):
        self.start_gateway()
        for user, groups, denied in (("root", "root", []), ("nobody", "games", MANAGES), ("nobody", "nogroup", LINES)):
            self.assert_denied(denied, user, groups)
        text = self.ctl("metrics").output
        self.assertIn('\nqorn_operations_total{operation="DoFactoryReset",result="Success"} 1\n', text)
        self.assertRegex(text, r'\nqorn_refused_calls_total\{reason="no_right"\} [1-9]')
        audit = (self.folder / "audit").read_text()
        self.assertIn('"method":"DoFactoryReset","caller":"root","program":"qornctl","result":1', audit)
        self.assertIn('"method":"DoFactoryReset","caller":"nobody","program":"qornctl","message":"refused: no right', audit)

    def test_others_have_what_polkit_grants(self):
        self.start_gateway()
        mock = self.enterContext(programs.Process(
            "/usr/bin/python3", "-m", "dbusmock", "--template", "polkitd", stderr=subprocess.DEVNULL,
            env={**os.environ, "LD_PRELOAD": "", "DBUS_SYSTEM_BUS_ADDRESS": self.bus.address}))
        polkit = self.polkit()
        for grants, granted in ((["look"], LOOKS), (["sign-in", "manage"], SIGN_INS + MANAGES[:-2]),
                                (["reset"], MANAGES[-1:]), (["secrets"], MANAGES[-2:-1])):
            polkit.SetAllowed([f"org.qorn.accounts1.{right}" for right in grants])
            self.assert_denied([line for line in LINES if line not in granted], "nobody", "nogroup")
            self.assert_denied([line for line in MANAGES if line not in granted], "nobody", "games")
        mock.terminate()
        mock.wait()
        self.assert_denied(LINES, "nobody", "nogroup")

    def connect(self):
        connection = dbus.bus.BusConnection(self.bus.address)
        self.addCleanup(connection.close)
        return connection

    def polkit(self):
        """What says to the mock of polkit what to allow."""
        connection = self.connect()
        programs.wait_until(lambda: connection.name_has_owner("org.freedesktop.PolicyKit1"))
        return dbus.Interface(connection.get_object(
            "org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority"), "org.freedesktop.DBus.Mock")

    def assert_denied(self, denied, user, group):
        """The user in this group is denied these commands and no others."""
        if os.geteuid() != 0:
            self.skipTest("only root can be other users")
        caller = {"user": user, "group": group, "extra_groups": []}
        ended = self.ctl("--keep-going", text="\n".join(LINES) + "\n", **caller)
        refused = [LINES[int(line.split(":")[2]) - 1] for line in ended.errors.splitlines() if "not allowed" in line]
        # A state has no code that could tell.
        self.assertEqual(refused, [line for line in denied if line != "get-network-setting-status"])
        self.assertEqual("version" in self.ctl("status", **caller).output, LOOKS[0] not in denied)  # A property.


class Completion(programs.TestCase):
    def test_knows_options_and_commands(self):
        script = programs.run("qornctl", "completion", "bash").output
        cases = {"us": "users", "--bus system get-user-info": "get-user-info-by-type get-user-information",
                 "--j": "--json", "--bus s": "system session", "help sig": "sign-in sign-in-alt sign-out",
                 "users u": "", "--timeout ''": "", "completion z": "zsh"}
        for words in cases:
            script += f"COMP_WORDS=(qornctl {words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); _qornctl; echo ${{COMPREPLY[*]}}\n"
        ended = subprocess.run(["bash", "-c", script], capture_output=True, text=True, timeout=programs.PATIENCE)
        self.assertEqual((ended.stdout.split("\n")[:-1], ended.stderr), (list(cases.values()), ""))
        self.assertIn("'users:show all users in a table'\n", programs.run("qornctl", "completion", "zsh").output)
        self.assertEqual(programs.run("qornctl", "completion", "fish").status, 2)
