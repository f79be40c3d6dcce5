#!/usr/bin/python3
"""A notification service that writes what it is shown into a file: "SUMMARY: BODY" a line, and "closed"."""

import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"


class Notifications(dbus.service.Object):
    def write(self, line):
        with open(sys.argv[1], "a", encoding="utf-8") as file:
            file.write(line + "\n")

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u")
    def Notify(self, _name, _replaces, _icon, summary, body, _actions, _hints, _timeout):
        self.write(f"{summary}: {body}")
        return 7

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, _number):
        self.write("closed")


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
service = Notifications(bus, "/org/freedesktop/Notifications")
name = dbus.service.BusName(NAME, bus)
GLib.MainLoop().run()
