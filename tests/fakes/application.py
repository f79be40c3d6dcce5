#!/usr/bin/python3
"""An application on the bus: "application.py SIGNATURE PATH FILE" writes one line into FILE for each call that it gets,
with the caller's bus name first, and a first line "ready" once it can be called. The line of an event is its class and
id, its direct parameter, and keyword, type and value of every other one."""

import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SIGNATURE, PATH, RECORD = sys.argv[1:]


def note(*words):
    with open(RECORD, "a", encoding="utf-8") as file:
        file.write("\t".join(words) + "\n")


class Application(dbus.service.Object):
    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {"Signature": SIGNATURE, "Name": os.path.basename(PATH), "Path": PATH}

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method("org.freedesktop.Application", in_signature="a{sv}", sender_keyword="sender")
    def Activate(self, platform, sender=None):
        note(sender, "Activate")

    @dbus.service.method("org.quillon.App1", in_signature="ssa{s(sv)}", out_signature="ia{s(sv)}", sender_keyword="sender")
    def Event(self, event_class, event_id, parameters, sender=None):
        direct = parameters["----"][1] if "----" in parameters else ""
        others = [str(word) for key in parameters if key != "----" for word in (key, *parameters[key])]
        note(sender, event_class + event_id, str(direct if not isinstance(direct, dbus.Array) else direct[0][1]), *others)
        return 0, {}


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    application = Application(bus, "/org/quillon/App")
    name = dbus.service.BusName(f"org.quillon.App.p{os.getpid()}", bus)
    note("ready")
    GLib.MainLoop().run()
    del application, name


main()
