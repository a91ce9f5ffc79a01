"""Uses the development cloud's page as a person does: page_test.py PAGE-URL FOLDER GATEWAY-COMMAND...

Prints a line for each step and exits with status 1 at the first that fails. Screenshots go to FOLDER.
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


def get_code():
    old = find("#code").text
    fill("#user", USER, Keys.ENTER)
    return wait(lambda: find("#code").text != old and find("#code").text, "no code")


def set_size(width, height):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 600})


def take_screenshots(name, scheme="light"):
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": scheme}]})
    for width in (1280, 360):
        set_size(width, 740)
        page = "document.documentElement"
        needed = browser.execute_script(f"return [{page}.scrollWidth, {page}.scrollHeight]")
        assert needed[0] <= width, f"{name}: {needed[0]} pixels wide on a screen of {width}"
        if not browser.find_elements(By.CSS_SELECTOR, "dialog[open]"):
            set_size(width, needed[1])
        assert browser.save_screenshot(os.path.join(folder, f"{name}-{width}.png"))
    browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


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
    take_screenshots("exchange")
    find("#close-exchange").send_keys(Keys.ESCAPE)
    print("The gateway's requests have appeared, and one has shown all its bytes", flush=True)

    Select(find("#kind")).select_by_value("status")
    fill("#path", "/token")
    fill("#status", "503", Keys.ENTER)
    wait_for("#faults", "/token answers 503")
    expect_result(f"refresh-access-token {USER}", False)
    wait_for("#requests", "503 Service Unavailable")
    take_screenshots("devcloud")
    take_screenshots("devcloud-dark", "dark")
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
