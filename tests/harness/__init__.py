"""What the tests of whole programs share: homes, processes, session buses, displays, and stand-ins for the shell.

Every test has its own home, its own bus, its own display and only its own processes, so that any number of them run at
once. A test's class is HomeTest, or one of those that add to it: ServiceTest a session bus, DesktopTest a display,
HostTest a stand-in for the shell that drives the tool host.
"""

from harness.applications import HELPERS, Applications
from harness.bus import MAIN_LOOP, ServiceTest, code, plain, typed
from harness.display import DesktopTest
from harness.home import BINARIES, BUILD, FAKES, HomeTest, program_of
from harness.processes import alive, stop, wait_until
from harness.snapshots import COMMAND, BACKGROUND, ENGINE, SnapshotTest
from harness.tool_host import APP, PATH, TOOL, HostTest, log_of
from harness.wayland import WaylandTest

__all__ = ["APP", "BACKGROUND", "BINARIES", "COMMAND", "ENGINE", "BUILD", "FAKES", "HELPERS", "MAIN_LOOP", "PATH", "TOOL",
           "Applications", "DesktopTest", "HomeTest", "HostTest", "ServiceTest", "SnapshotTest", "WaylandTest", "alive", "code", "log_of", "plain", "program_of", "stop", "typed", "wait_until"]
