"""The console command that gets an authorisation code from the account server."""

import signal

import programs
from gateway_test_case import GatewayTestCase


class RequestCode(GatewayTestCase):
    def setUp(self):
        super().setUp()
        self.cloud = self.enterContext(programs.Cloud())

    def request(self, url, user="alice"):
        self.configure(f"<account_zep_auth_url>{url}</account_zep_auth_url>")
        return programs.run(*self.command, "--show-secrets", text=f"request-code {user}\n")

    def assert_failure(self, url, error):
        self.assertEqual(self.request(url).errors,
                         f"qorn-gateway: standard input:1: request-code: {url}/authorize: {error}\n")

    def test_posts_the_user_encoded_over_http_and_unchecked_https(self):
        for number, kind in enumerate(("http", "https")):
            status, output, _ = self.request(self.cloud.urls[kind], "'a&b c@example.com'")
            self.assertEqual(status, 0)
            self.assertRegex(output, "\n  code: [a-z0-9-]{8,}\n")
            request = self.cloud.requests()[number]
            self.assertEqual((request.target, request.body), ("/authorize", "user=a%26b%20c%40example.com"))

    def test_says_why_there_is_none(self):
        url, no_code = self.cloud.urls["http"], "the answer holds no code"
        for status, body, error in ((500, "", "status 500"), (302, '{"code":"abc"}', "status 302"), (200, "", no_code),
                                    (200, '["code"]', no_code), (200, '{"code":1}', no_code),
                                    (200, '{"code":""}', no_code), (200, " " * 70000, "the answer is too long")):
            with self.subTest(body[:20]):
                self.cloud.ask("/api/faults", {"kind": "status", "status": status, "body": body})
                self.assert_failure(url, error)
        self.assert_failure("file:///etc/hostname#", "Unsupported protocol")
        with self.cloud.refuse_connections():
            self.assert_failure(url, "Couldn't connect to server")

    def test_ends_at_a_signal(self):
        self.cloud.ask("/api/faults", {"kind": "stall"})
        self.configure(f"<account_zep_auth_url>{self.cloud.urls['http']}</account_zep_auth_url>")
        gateway = self.start()
        gateway.type("request-code alice\n")
        programs.wait_until(self.cloud.requests)
        gateway.send_signal(signal.SIGTERM)
        gateway.wait_for("/authorize: told to stop")
        gateway.finish()
