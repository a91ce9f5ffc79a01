"""Uses the development cloud's page as a person does: page_test.py PAGE-URL FOLDER AXE GATEWAY-COMMAND...

Prints a line for each step and exits with status 1 at the first that fails. Screenshots go to FOLDER. AXE is
the script that checks what each of them shows for accessibility.
"""

import json
import os
import pathlib
import socket
import subprocess
import sys
import urllib.request

from selenium.common.exceptions import StaleElementReferenceException
from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

url, folder, axe, *gateway_command = sys.argv[1:]
USER, ADDRESS = "ann@example.com", "02-00-5E-10-00-01"


def start_browser():
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("headless=new", "no-sandbox", "disable-dev-shm-usage", "disable-gpu", "no-proxy-server",
                     "disable-background-networking", "host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"):
        options.add_argument("--" + argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def run(command):
    """Runs the command at the gateway's console; returns the line with its result."""
    gateway.stdin.write(command + "\n")
    gateway.stdin.flush()
    for line in gateway.stdout:
        if line.startswith(command.split()[0] + ": "):
            return line.strip()
    raise AssertionError("the gateway has ended")


def find(selector):
    return browser.find_element(By.CSS_SELECTOR, selector)


def wait(condition, problem):
    # The page may replace an element while it is being read: read again.
    return WebDriverWait(browser, 10, 0.05, [StaleElementReferenceException]).until(lambda _: condition(), problem)


def wait_for(selector, text):
    wait(lambda: text in find(selector).text, f"'{text}' does not appear in {selector}")


def fill(selector, text, *keys):
    find(selector).clear()
    find(selector).send_keys(text, *keys)


def get_code(user=USER):
    old = find("#code").text
    fill("#user", user, Keys.ENTER)
    return wait(lambda: find("#code").text != old and find("#code").text, "no code")


def set_size(width, height):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})


def press(*keys):
    ActionChains(browser).send_keys(*keys).perform()


def tab_to(selector):
    """Moves the focus there by keyboard alone; what has it must be seen to have it."""
    for _ in range(200):
        focused = browser.switch_to.active_element
        if browser.execute_script("return arguments[0].matches(arguments[1])", focused, selector):
            assert focused.value_of_css_property("outline-style") != "none", f"no outline: {selector}"
            return
        press(Keys.TAB)
    raise AssertionError(f"Tab never comes to {selector}")


def check_accessibility(name):
    browser.execute_script(pathlib.Path(axe).read_text())
    found = browser.execute_async_script("axe.run().then(arguments[0])")
    bad = [(item["id"], node["html"], node["failureSummary"]) for item in found["violations"] for node in item["nodes"]]
    assert found["passes"] and not bad, (name, bad)


def look(name):
    """Takes screenshots of both widths in both colour schemes, and checks each."""
    for scheme in ("dark", "light"):
        browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme}]})
        for width in (1280, 360):
            set_size(width, 740)
            page = "document.documentElement"
            needed = browser.execute_script(f"return [{page}.scrollWidth, {page}.scrollHeight]")
            assert needed[0] <= width, f"{name}: {needed[0]} pixels wide on a screen of {width}"
            check_accessibility((name, scheme, width))
            if not browser.find_elements(By.CSS_SELECTOR, "dialog[open]"):
                set_size(width, needed[1])
            suffix = "-dark" * (scheme == "dark")
            assert browser.save_screenshot(os.path.join(folder, f"{name}{suffix}-{width}.png"))
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def recorded():
    with urllib.request.urlopen(url + "/api/requests") as answer:
        return json.load(answer)


def send_odd_requests():
    """What a command line cannot hold as it is; returns the targets."""
    heads = ["POST /odd?a=[1]&b={2}/../c HTTP/1.1\r\nX-Empty:\r\nX-Quote: it's $HOME\r\nContent-Length: 18",
             "PUT /chunked HTTP/1.1\r\nUser-Agent: x\r\nTransfer-Encoding: chunked", "HEAD /head HTTP/1.1",
             "OPTIONS * HTTP/1.1\r\nAccept: */*"]
    bodies = (b"--b\r\n@a'b\\n%d\x00\xff\r\n\n", b"3;x=y\r\n@ab\r\n2\r\nc\n\r\n0\r\n\r\n", b"", b"")
    host, port = find("#urls code").text.removeprefix("http://").split(":")
    for head, body in zip(heads, bodies):
        with socket.create_connection((host, int(port)), 10) as connection:
            connection.sendall(f"{head}\r\nHost: {host}:{port}\r\n\r\n".encode() + body)
            assert connection.recv(1)
    return [head.split()[1] for head in heads]


def essence(request):
    """A request without how its body was framed."""
    lines = sorted(line for line in request["header_lines"] if not line.startswith(("Content-Le", "Transfer-E")))
    return request["method"], request["target"], request["body"], lines


def check_curl(target):
    """The command that the page shows sends the request again."""
    wait_for("#exchange-title", target)
    find("#copy-curl").send_keys(Keys.ENTER)
    original = next(request for request in recorded() if request["target"] == target)
    before = recorded()[-1]["number"]
    subprocess.run(["sh", "-c", find("#curl").get_attribute("textContent")], check=True, capture_output=True)
    assert recorded()[-1]["number"] > before
    assert essence(recorded()[-1]) == essence(original), (recorded()[-1], original)
    press(Keys.ESCAPE)


def expect_result(command, is_good):
    result = run(command)
    assert result.endswith(": 1 Success") == is_good, result


def test():
    browser.get(url + "/")
    wait_for("#connection", "live")
    code = get_code()
    wait_for("#users", f"code {code[:4]}…")
    expect_result(f"create-user {USER} {code}", True)
    wait_for("#users", "access token")
    wait_for("#devices", f"{ADDRESS}\nPEER-{ADDRESS}")
    assert USER in find("#devices").text
    print("A code from the page has made a user; user, tokens and device have appeared", flush=True)

    wait_for("#requests", "POST /token")
    wait_for("#requests", "POST /device/adduserdevice")
    browser.find_element(By.XPATH, "//tbody[@id='requests']//button[.='POST /token']").send_keys(Keys.ENTER)
    wait_for("#answer-bytes", '"access_token":"')
    assert f"&code={code}" in find("#request-bytes").text and code not in find("#users").text
    look("exchange")
    press(Keys.ESCAPE)
    print("The gateway's requests have appeared, and one has shown all its bytes", flush=True)

    get_code("bob@example.com")
    tab_to("#find-user")
    press("ANN bob")
    wait_for("#find-user-status", "0 of 2 match")
    press(Keys.BACKSPACE * 4)
    wait_for("#find-user-status", "1 of 2 match")
    assert "bob@" not in find("#users").text
    tab_to("#find-request")
    press("adduser 200")
    wait_for("#find-request-status", "1 of ")
    tab_to("#requests tr:not([hidden]) button")
    press(Keys.ENTER)
    check_curl("/device/adduserdevice")
    fill("#find-request", " ")
    for target in send_odd_requests():
        wait_for("#requests", target)
        browser.find_element(By.XPATH, f"//tbody[@id='requests']//button[contains(., '{target}')]").send_keys(Keys.ENTER)
        check_curl(target)
    print("Searches have found a user and a request, which curl has sent again", flush=True)

    tab_to("#users tr:not([hidden]) button")
    press(Keys.ENTER)
    wait_for("#story-devices", f"PEER-{ADDRESS}")
    wait_for("#story-credentials", "refresh token")
    story = find("#story-requests").text
    assert story.index("POST /token") < story.index("POST /device/adduserdevice"), story
    assert "getuserdevice" not in story, "requests of the system account"
    look("story")
    tab_to("#story-requests button")
    press(Keys.ENTER)
    wait_for("#exchange-about", f"for {USER}")
    press(Keys.ESCAPE)
    press(Keys.ESCAPE)
    fill("#find-user", " ")
    fill("#find-request", " ")
    print("A user's story has its tokens, device and requests in order", flush=True)

    Select(find("#kind")).select_by_value("status")
    fill("#path", "/token")
    fill("#status", "503", Keys.ENTER)
    wait_for("#faults", "/token answers 503")
    expect_result(f"refresh-access-token {USER}", False)
    wait_for("#requests", "503 Service Unavailable")
    look("devcloud")
    find("#faults button").click()
    wait_for("#faults-title + ul + p", "None")
    expect_result(f"refresh-access-token {USER}", True)
    Select(find("#kind")).select_by_value("refuse")
    find("#fault button.main").click()
    wait_for("#faults", "Connections are refused")
    expect_result(f"sign-in {USER} {get_code()}", False)
    find("#faults button").click()
    wait_for("#faults-title + ul + p", "None")
    print("The gateway has failed while faults were on, and worked when they were off", flush=True)

    browser.get(url + "/authorize")
    fill("#user", "bob & <co>", Keys.ENTER)
    wait_for("main", "Code for bob & <co>")
    look("authorize")
    complaints = [entry for entry in browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]
    assert not complaints, complaints
    print("The authorisation page has given a code; the browser has no complaint", flush=True)


browser = start_browser()
try:
    with subprocess.Popen(gateway_command + ["--keep-going"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True) as gateway:
        test()
finally:
    browser.quit()
