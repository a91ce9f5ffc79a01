"""Runs the image of a build as a container would: unshare --net image_test.py BUILD

The image's ports are free in a network of its own, where 192.0.2.1 stands for another machine.
"""

import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

from qorn_devcloud import Control, Gateway, Process

image = pathlib.Path(sys.argv[1]) / "image"


def call(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


with tempfile.TemporaryDirectory() as name:
    folder, bundle = pathlib.Path(name), pathlib.Path(name) / "bundle"
    call("ip", "link", "set", "lo", "up")
    call("ip", "address", "add", "192.0.2.1/32", "dev", "lo")
    call("umoci", "unpack", "--image", f"{image}:{call('umoci', 'list', '--layout', image)}", bundle)
    process = json.loads((bundle / "config.json").read_text())["process"]
    uid, gid = process["user"]["uid"], process["user"]["gid"]
    with Process("unshare", "--pid", "--fork", "--kill-child", "--root", bundle / "rootfs", f"--setgid={gid}",
                 f"--setuid={uid}", *process["args"], stdout=subprocess.PIPE) as container:
        assert container.stdout.readline() == b"http http://0.0.0.0:8080\n"
        program = pathlib.Path(f"/proc/{container.pid}/task/{container.pid}/children").read_text().strip()
        assert min(uid, os.stat(f"/proc/{program}").st_uid) > 0, "it runs as root"
        cloud = Control({"http": "http://192.0.2.1:8080", "api": "http://192.0.2.1:8090"})
        with Gateway(cloud, folder) as gateway:
            assert gateway.run("create-user", "ann", cloud.code("ann")).message == "Success"
        os.kill(int(program), signal.SIGTERM)  # As the first process of its container it needs a handler.
        assert container.wait(60) == 0
print("good    the image runs without rights, creates a user for a gateway elsewhere, and ends at SIGTERM")
