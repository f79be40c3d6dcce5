"""A test with a Wayland compositor of its own."""

import json
import os
import pwd
import shutil
import socket
import struct
import subprocess
import tempfile

from harness.bus import ServiceTest
from harness.home import TESTS
from harness.processes import stop, wait_until

CONFIG = """focus_on_window_activation focus
xwayland disable
output HEADLESS-1 resolution 1280x800
default_border none
exec echo "$WAYLAND_DISPLAY $SWAYSOCK" > "$XDG_RUNTIME_DIR/ready"
"""


class WaylandTest(ServiceTest):
    """A test with sway, which draws into memory and has no devices; keys come from the program wtype."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        folder = tempfile.mkdtemp(prefix="quillon-wayland-")
        cls.addClassCleanup(shutil.rmtree, folder, ignore_errors=True)
        with open(os.path.join(folder, "config"), "w", encoding="utf-8") as file:
            file.write(CONFIG)
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
        environment.update(XDG_RUNTIME_DIR=folder, WLR_BACKENDS="headless", WLR_RENDERER="pixman",
                           WLR_LIBINPUT_NO_DEVICES="1", HOME=folder)
        user = None
        if os.getuid() == 0:  # sway does not run for the administrator
            user = pwd.getpwnam("nobody").pw_uid
            os.chown(folder, user, -1)
        compositor = subprocess.Popen(["sway", "-c", os.path.join(folder, "config")], env=environment, user=user,
                                      group=user and pwd.getpwnam("nobody").pw_gid, extra_groups=[] if user else None,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        cls.compositor = compositor
        cls.addClassCleanup(stop, compositor)
        ready = os.path.join(folder, "ready")
        wait_until(lambda: os.path.exists(ready) and os.path.getsize(ready) > 0, "the compositor")
        with open(ready, encoding="utf-8") as file:
            display, cls.control = file.read().split()
        cls.display = os.path.join(folder, display)

        # A keyboard that stays, so that every window has it before the first key.
        cls.keyboard = subprocess.Popen(["wtype", "-s", "1000000"], env=dict(environment, WAYLAND_DISPLAY=cls.display))
        cls.addClassCleanup(stop, cls.keyboard)

    def setUp(self):
        super().setUp()
        suppressions = os.path.join(TESTS, "support", "leaks.supp")
        self.environment.update(WAYLAND_DISPLAY=self.display,
                                LSAN_OPTIONS=f"suppressions={suppressions}:print_suppressions=0")
        for name in ("DISPLAY", "QT_QPA_PLATFORM", "GDK_BACKEND"):
            self.environment.pop(name, None)

    def message(self, *words):
        """What sway says to a request."""
        done = subprocess.run(["swaymsg", "-s", self.control, "-r", *words], capture_output=True, text=True, timeout=60,
                              check=False)
        return json.loads(done.stdout or "null")

    def windows(self):
        """All windows that are shown: dictionaries with app_id, name, pid, focused."""
        found, nodes = [], [self.message("-t", "get_tree")]
        while nodes:
            node = nodes.pop()
            nodes += node["nodes"] + node["floating_nodes"]
            if node.get("pid"):
                found.append(node)
        return found

    def window(self, what="the window", **wanted):
        """Waits for a window whose properties are as WANTED."""
        def look():
            return [one for one in self.windows() if all(one[name] == value for name, value in wanted.items())]

        return wait_until(look, what)[0]

    def keys(self, *words):
        """Keys for the focused window, in the words of wtype."""
        subprocess.run(["wtype", *words], env=self.environment, timeout=60, check=True)

    def focus(self, window):
        self.message(f"[con_id={window['id']}] focus")
        self.window("the focus", id=window["id"], focused=True)

    def activation_token(self):
        """A token as a desktop gives one to a program that it starts: xdg_activation_v1, spoken over the wire."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(60)
            connection.connect(self.display)
            connection.sendall(request(1, 1, struct.pack("=I", 2)))  # wl_display.get_registry
            for sender, code, content in events(connection):
                if (sender, code) == (2, 0) and b"xdg_activation_v1\0" in content:
                    # wl_registry.bind, xdg_activation_v1.get_activation_token, xdg_activation_token_v1.commit
                    name = content[:4] + struct.pack("=I", 18) + b"xdg_activation_v1".ljust(20, b"\0")
                    connection.sendall(request(2, 0, name + struct.pack("=II", 1, 3)) +
                                       request(3, 1, struct.pack("=I", 4)) + request(4, 3, b""))
                elif (sender, code) == (4, 0):
                    (size,) = struct.unpack_from("=I", content)
                    return content[4:3 + size].decode()
        return None


def request(receiver, code, content):
    """A message of the Wayland protocol."""
    return struct.pack("=II", receiver, (8 + len(content)) << 16 | code) + content


def events(connection):
    """The messages that come: who sends them, their codes, and what they hold."""
    data = b""
    while True:
        while len(data) >= 8 and len(data) >= struct.unpack_from("=I", data, 4)[0] >> 16:
            sender, word = struct.unpack_from("=II", data)
            yield sender, word & 0xFFFF, data[8:word >> 16]
            data = data[word >> 16:]
        data += connection.recv(4096)
