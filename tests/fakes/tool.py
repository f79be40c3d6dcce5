#!/usr/bin/python3
"""A tool application on the bus contract alone, which does what Resources/behaviour.json of its bundle says.

Keys: "crash" ("launch", "before reply", "after reply"), "never" (no answer at all), "reply" (keyword -> [type,
value]), "log" (text of a transcript), "outside log" (a path named as the transcript as it is), "record" (a file that
gets the command line and the folder), "documents" (a file that gets the path of each document, ended by a NUL), "child"
(starts a child that ignores hang-ups in a session of its own), "heir" (forks a child that keeps the connection; a
file gets its process id), "report" (an 'ansr' event with these parameters before the reply), "error" (the error
number of the reply).
"""

import json
import os
import signal
import subprocess
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

BUNDLE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(sys.argv[0]))))
INTERFACE = "org.quillon.App1"


def typed(kind, value):
    if kind == "long":
        return dbus.Struct((kind, dbus.Int32(value)), signature="sv")
    return dbus.Struct((kind, dbus.String(value)), signature="sv")


class Tool(dbus.service.Object):
    def __init__(self, bus, behaviour, loop):
        super().__init__(bus, "/org/quillon/App")
        self.bus, self.behaviour, self.loop = bus, behaviour, loop
        with open(os.path.join(BUNDLE, "Contents", "PkgInfo"), encoding="latin-1") as file:
            self.signature_text = file.read()[4:8]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {"Signature": self.signature_text, "Name": os.path.basename(BUNDLE), "Path": BUNDLE}

    @dbus.service.method(INTERFACE, in_signature="ssa{s(sv)}", out_signature="ia{s(sv)}",
                         async_callbacks=("reply", "fail"), sender_keyword="sender")
    def Event(self, event_class, event_id, parameters, reply, fail, sender=None):
        if (event_class, event_id) == ("aevt", "quit"):
            reply(0, {})
            self.loop.quit()
        elif (event_class, event_id) == ("QUIL", "priv"):
            self.run(parameters, reply, sender)
        elif (event_class, event_id) == ("aevt", "odoc") and "documents" in self.behaviour:
            path = parameters["----"][1]
            if isinstance(path, dbus.Array):
                path = path[0][1]
            with open(self.behaviour["documents"], "ab") as file:
                file.write((path.encode() if isinstance(path, str) else bytes(path)) + b"\0")
            reply(0, {})
        else:
            reply(-1708, {})

    def run(self, parameters, reply, sender):
        does = self.behaviour
        if "record" in does:
            with open(does["record"], "w", encoding="utf-8") as file:
                file.write(f"{parameters['----'][1]}\n{parameters['dest'][1]}\n")
        if does.get("child"):
            child = subprocess.Popen(["setsid", "sh", "-c", "trap '' HUP; echo $$ > \"$1\"; exec sleep 1000", "sh",
                                      does["child"]])
            del child
        if "heir" in does:
            # A child that keeps the bus connection open when this program ends.
            child = os.fork()
            if child == 0:
                os.close(1)
                os.close(2)
                while True:
                    signal.pause()
            with open(does["heir"], "w", encoding="utf-8") as file:
                file.write(str(child))
        if does.get("crash") == "before reply":
            os.kill(os.getpid(), signal.SIGKILL)
        if "report" in does:
            shell = self.bus.get_object(sender, "/org/quillon/App")
            shell.Event("aevt", "ansr", dbus.Dictionary({key: typed(*value) for key, value in does["report"].items()},
                                                        signature="s(sv)"), dbus_interface=INTERFACE)
        if does.get("never"):
            return
        values = {key: typed(*value) for key, value in does.get("reply", {"----": ["long", 0]}).items()}
        if "log" in does:
            folder = os.path.join(os.environ["XDG_CACHE_HOME"], "quillon")
            os.makedirs(folder, mode=0o700, exist_ok=True)
            path = os.path.join(folder, f"transcript-{os.getpid()}")
            with open(path, "w", encoding="utf-8", newline="") as file:
                file.write(does["log"])
            values["logf"] = typed("fss ", path)
        if "outside log" in does:
            values["logf"] = typed("fss ", does["outside log"])
        reply(does.get("error", 0), dbus.Dictionary(values, signature="s(sv)"))
        if does.get("crash") == "after reply":
            self.bus.flush()
            os.kill(os.getpid(), signal.SIGKILL)


def main():
    with open(os.path.join(BUNDLE, "Contents", "Resources", "behaviour.json"), encoding="utf-8") as file:
        behaviour = json.load(file)
    if behaviour.get("crash") == "launch":
        os.kill(os.getpid(), signal.SIGKILL)
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    loop = GLib.MainLoop()
    tool = Tool(bus, behaviour, loop)
    name = dbus.service.BusName(f"org.quillon.App.p{os.getpid()}", bus)
    loop.run()
    del tool, name


main()
