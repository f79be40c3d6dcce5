#!/usr/bin/python3
"""Follows the console's text on the bus and writes it to the file that it is given."""

import sys

import dbus
import dbus.mainloop.glib
from gi.repository import GLib

dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
target = open(sys.argv[1], "w", encoding="utf-8")


def written(text):
    target.write(text)
    target.flush()


bus.add_signal_receiver(written, "ConsoleText", "org.quillon.Shell1")
bus.get_object("org.quillon.Shell", "/org/quillon/Shell").Follow(True, dbus_interface="org.quillon.Shell1")
print("following", flush=True)
GLib.MainLoop().run()
