"""Uses the development cloud's page as a person does: page_test.py PAGE-URL FOLDER GATEWAY-COMMAND...

Prints a line for each step and ends with status 1 at the first that fails. Screenshots go to FOLDER.
"""

import os
import subprocess
import sys

from selenium.common.exceptions import StaleElementReferenceException
from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

url, folder, *gateway_command = sys.argv[1:]
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
    """Types the command at the gateway's console and gives the line with its result."""
    gateway.stdin.write(command + "\n")
    gateway.stdin.flush()
    for line in gateway.stdout:
        if line.startswith(command.split()[0] + ": "):
            return line.strip()
    raise AssertionError("the gateway has ended")


def find(selector):
    return browser.find_element(By.CSS_SELECTOR, selector)


def wait(condition, problem):
    # What the page draws anew while it is read is read again.
    waiting = WebDriverWait(browser, 10, 0.05, [StaleElementReferenceException])
    return waiting.until(lambda _: condition(), problem)


def wait_for(selector, text):
    wait(lambda: text in find(selector).text, f"'{text}' does not appear in {selector}")


def step(text):
    print(text, flush=True)


def get_code():
    old = find("#code").text
    find("#user").clear()
    find("#user").send_keys(USER, Keys.ENTER)
    return wait(lambda: find("#code").text != old and find("#code").text, "no code")


def take_screenshot(name, width, scheme):
    def resize(height):
        browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})

    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    resize(740)
    needed = browser.execute_script(
        "const page = document.documentElement; return [page.scrollWidth, page.scrollHeight]")
    assert needed[0] <= width, f"{name}: {needed[0]} pixels wide on a screen of {width}"
    if not browser.execute_script("return document.querySelector('dialog[open]')"):
        resize(needed[1])
    assert browser.save_screenshot(os.path.join(folder, f"{name}-{width}.png"))


def take_screenshots(name, scheme="light"):
    for width in (1280, 360):
        take_screenshot(name, width, scheme)
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def test():
    browser.get(url + "/")
    wait_for("#connection", "live")
    code = get_code()
    wait_for("#users", f"code {code[:4]}…")
    step(f"{USER} has signed in on the page and got a code, listed as {code[:4]}…")

    result = run(f"create-user {USER} {code}")
    assert result == "create-user: 1 Success", result
    step(f"The gateway has created the user with it: {result}")
    wait_for("#users", "access token")
    wait_for("#devices", f"{ADDRESS}\nPEER-{ADDRESS}")
    assert USER in find("#devices").text
    step("User, tokens and device have appeared on the page as it stood")

    wait_for("#requests", "POST /token")
    wait_for("#requests", "POST /device/adduserdevice")
    browser.find_element(By.XPATH, "//tbody[@id='requests']//button[.='POST /token']").send_keys(Keys.ENTER)
    wait_for("#answer-bytes", '"access_token":"')
    assert f"&code={code}" in find("#request-bytes").text and code not in find("#users").text
    step("The gateway's requests have arrived; one exchange is open, with all its bytes")
    take_screenshots("exchange")
    find("#close-exchange").send_keys(Keys.ESCAPE)

    Select(find("#kind")).select_by_value("status")
    find("#path").clear()
    find("#path").send_keys("/token")
    find("#status").send_keys("503", Keys.ENTER)
    wait_for("#faults", "/token answers 503")
    result = run(f"refresh-access-token {USER}")
    assert result != "refresh-access-token: 1 Success", result
    wait_for("#requests", "503 Service Unavailable")
    step(f"A fault is on and the gateway reports it: {result}")
    take_screenshots("devcloud")
    take_screenshots("devcloud-dark", "dark")

    find("#faults button").click()
    wait_for("#faults-title + ul + p", "None")
    result = run(f"refresh-access-token {USER}")
    assert result == "refresh-access-token: 1 Success", result
    step(f"The fault is off: {result}")

    Select(find("#kind")).select_by_value("refuse")
    find("#fault button.main").click()
    wait_for("#faults", "Connections are refused")
    result = run(f"sign-in {USER} {get_code()}")
    assert result != "sign-in: 1 Success", result
    find("#faults button").click()
    wait_for("#faults-title + ul + p", "None")
    step(f"Connections were refused, which the gateway reported, and are open again: {result}")

    browser.get(url + "/authorize")
    find("#user").send_keys("bob & <co>", Keys.ENTER)
    wait_for("main", "Code for bob & <co>")
    step("The authorisation page gives a code too")

    complaints = [entry for entry in browser.get_log("browser") if entry["level"] in ("SEVERE", "WARNING")]
    assert not complaints, complaints
    step("The browser has no complaint")


browser = start_browser()
try:
    with subprocess.Popen(gateway_command + ["--keep-going"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          text=True) as gateway:
        test()
finally:
    browser.quit()
