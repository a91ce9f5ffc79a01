"""A gateway on a bus of the test's own, and qornctl."""

import os
import subprocess
import unittest

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
friends""".splitlines()
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
BUS = """<busconfig><type>system</type><listen>unix:path={}/bus</listen><auth>EXTERNAL</auth>
<policy context='default'><allow user='*'/><allow own='*'/><allow send_destination='*' eavesdrop='true'/>
<allow eavesdrop='true'/></policy></busconfig>"""


class Bus(programs.TestCase):
    def setUp(self):
        super().setUp()
        self.folder.chmod(0o755)
        self.address = f"unix:path={self.folder}/bus"
        config = self.write("bus.conf", BUS.format(self.folder))
        bus = self.enterContext(programs.Program("dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                                                 f"--config-file={config}", stdout=subprocess.PIPE,
                                                 stderr=subprocess.DEVNULL))
        bus.stdout.readline()
        self.cloud = self.enterContext(programs.Cloud())

    def start_gateway(self, *options):
        config = programs.write_config(self.folder, self.cloud, ("</config>", """
            <gateway_bus_calls_per_second>1000</gateway_bus_calls_per_second>
            <gateway_bus_call_burst>1000</gateway_bus_call_burst>
            <gateway_bus_group>games</gateway_bus_group></config>"""))
        gateway = self.enterContext(programs.Program(
            "./qorn-gateway", "--config", config, "--log", self.folder / "log", "--audit", self.folder / "audit",
            "--daemon", "--bus", self.address, stdout=subprocess.DEVNULL))
        programs.wait_until(lambda: gateway.poll() is not None or self.ctl("get-session-lifetime").status == 0)
        return gateway

    def ctl(self, *words, **options):
        return programs.run("qornctl", "--bus", self.address, *words, **options)

    def test_qornctl_does_what_the_console_does(self):
        none = self.ctl("users")
        self.assertEqual(none.status, 2)
        self.assert_one_line(none.errors, "qornctl: no gateway answers: ")
        gateway = self.start_gateway()
        made = self.ctl("create-user", "ann", self.cloud.issue_code("ann"))
        self.assertRegex(made.output, "^create-user: 1 Success\n  user_uuid: [0-9a-f-]{36}\n$")
        self.assertRegex(self.ctl("users").output, "(?m)^ann +Default +Off ")
        self.assertRegex(self.ctl("--json", "users").output, '"user_id":"ann".*\n.*"user_id":"qornsystem"')
        failed = self.ctl("info", "nobody")
        self.assertEqual((failed.status, failed.errors.count("\n")), (1, 1))
        shown = self.ctl(text="in-alt ann ''\nstatus\nget-user-info-by-type $user_uuid 104\n")
        self.assertRegex(shown.output, r"Users +2\n(.*\n)*Sessions +1 open; (.*\n)*  value: [0-9a-f]{4}…")
        with programs.Program("./qornctl", "--bus", self.address, "watch", "60", stdout=subprocess.PIPE, bufsize=0) as watch:
            os.set_blocking(watch.stdout.fileno(), False)

            def hears():  # From some moment on.
                self.ctl("in-alt", "ann", "")
                return b"SignInAlt" in (watch.stdout.read() or b"")
            programs.wait_until(hears)
        taken = programs.run("qorn-gateway", "--config", self.write("other.xml", "<config></config>"), "--component",
                             programs.LIBRARIES / "libqorn_gateway_fake_component.so", "--bus", self.address,
                             "--log", self.folder / "other")
        self.assertEqual(taken.status, 2)
        self.assert_one_line(taken.errors, "qorn-gateway: the name org.qorn.Accounts1 cannot be had on the bus ")
        gateway.terminate()
        self.assertEqual(gateway.wait(programs.PATIENCE), 0)

    @unittest.skipUnless(os.geteuid() == 0, "only root can be other users")
    def test_rights_are_the_callers(self):
        self.start_gateway()
        lines = LOOKS + SIGN_INS + MANAGES
        for user, groups, denied in (("root", "root", []), ("nobody", "games", MANAGES), ("nobody", "nogroup", lines)):
            ended = subprocess.run(
                ["setpriv", "--reuid", user, "--regid", groups, "--clear-groups", programs.BUILD / "bin/qornctl",
                 "--bus", self.address, "--keep-going"],
                input="\n".join(lines) + "\n", capture_output=True, text=True, timeout=programs.PATIENCE)
            refused = [lines[int(line.split(":")[2]) - 1] for line in ended.stderr.splitlines() if "not allowed" in line]
            # A state has no code that could tell.
            self.assertEqual(refused, [line for line in denied if line != "get-network-setting-status"])
            status = subprocess.run(
                ["setpriv", "--reuid", user, "--regid", groups, "--clear-groups", programs.BUILD / "bin/qornctl",
                 "--bus", self.address, "status"], capture_output=True, text=True, timeout=programs.PATIENCE)
            self.assertEqual("version" in status.stdout, LOOKS[0] not in denied)  # A property.
        audit = (self.folder / "audit").read_text()
        self.assertIn('"method":"DoFactoryReset","caller":"root","program":"qornctl","result":1', audit)
        self.assertIn('"method":"DoFactoryReset","caller":"nobody","program":"qornctl","message":"refused: no right', audit)
