#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A stand-in for the desktop's portals on the session bus, for scripts/sandbox-check.sh: nobody is asked, choices are
read from a file, and each call is noted, one JSON object a line.

    standinportal.py CHOICES CALLS

CHOICES is {"panels": {title: [path, ...]}, "transfers": {key: [path, ...]}}, paths as the sandbox sees them. A panel
with a title that is not in it is dismissed. Prints "ready" once it may be called.
"""
import json
import os
import sys
import urllib.parse

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

DESKTOP = "org.freedesktop.portal.Desktop"
DOCUMENTS = "org.freedesktop.portal.Documents"
DESKTOP_PATH = "/org/freedesktop/portal/desktop"
DOCUMENTS_PATH = "/org/freedesktop/portal/documents"
APPEARANCE = "org.freedesktop.appearance"


def portal(name):
    return f"org.freedesktop.portal.{name}"


class Request(dbus.service.Object):
    @dbus.service.method(portal("Request"))
    def Close(self):
        self.remove_from_connection()

    @dbus.service.signal(portal("Request"), signature="ua{sv}")
    def Response(self, response, results):
        pass


class Noting(dbus.service.Object):
    def __init__(self, bus, path, choices, calls):
        super().__init__(bus, path)
        self.bus, self.choices, self.calls = bus, choices, calls

    def note(self, method, **what):
        print(json.dumps({"method": method, **what}), file=self.calls, flush=True)

    def answer(self, sender, options, response, results):
        """The path of a request that answers once the caller has it."""
        token = options.get("handle_token", "none")
        path = f"{DESKTOP_PATH}/request/{sender[1:].replace('.', '_')}/{token}"
        request = Request(self.bus, path)

        def respond():
            request.Response(dbus.UInt32(response), dbus.Dictionary(results, signature="sv"))
            request.remove_from_connection()

        # Callers listen for the response once they have the path; a user is never as quick as that.
        GLib.timeout_add(500, respond)
        return dbus.ObjectPath(path)


def pointed(descriptor):
    """What a descriptor stands for, for somebody who can see it."""
    number = descriptor.take()
    try:
        place, status = os.readlink(f"/proc/self/fd/{number}"), os.fstat(number)
        return {"path": place, "device": status.st_dev, "inode": status.st_ino}
    finally:
        os.close(number)


class Desktop(Noting):
    def choose(self, method, sender, title, options):
        paths = self.choices["panels"].get(str(title))
        self.note(method, title=str(title), directory=bool(options.get("directory", False)),
                  multiple=bool(options.get("multiple", False)), answered=paths)
        uris = [f"file://{urllib.parse.quote(path)}" for path in paths or []]
        results = {"uris": dbus.Array(uris, signature="s"), "writable": dbus.Boolean(True)}
        return self.answer(sender, options, 0 if paths else 1, results if paths else {})

    @dbus.service.method(portal("FileChooser"), in_signature="ssa{sv}", out_signature="o", sender_keyword="sender")
    def OpenFile(self, parent, title, options, sender=None):
        return self.choose("FileChooser.OpenFile", sender, title, options)

    @dbus.service.method(portal("FileChooser"), in_signature="ssa{sv}", out_signature="o", sender_keyword="sender")
    def SaveFile(self, parent, title, options, sender=None):
        return self.choose("FileChooser.SaveFile", sender, title, options)

    @dbus.service.method(portal("Settings"), in_signature="as", out_signature="a{sa{sv}}")
    def ReadAll(self, namespaces):
        self.note("Settings.ReadAll")
        return {APPEARANCE: dbus.Dictionary({"color-scheme": dbus.UInt32(2)}, signature="sv")}

    @dbus.service.method(portal("Settings"), in_signature="ss", out_signature="v")
    def Read(self, namespace, key):
        if (namespace, key) == (APPEARANCE, "color-scheme"):
            return dbus.UInt32(2, variant_level=1)
        raise dbus.DBusException("no such setting", name=portal("Error.NotFound"))

    @dbus.service.method(portal("Notification"), in_signature="sa{sv}")
    def AddNotification(self, name, notification):
        self.note("Notification.AddNotification", title=str(notification.get("title", "")))

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return dbus.UInt32(3, variant_level=1)


class OpenUri(Desktop):
    """Of its own, since two interfaces of the portal have a method OpenFile."""
    @dbus.service.method(portal("OpenURI"), in_signature="sha{sv}", out_signature="o", sender_keyword="sender")
    def OpenFile(self, parent, descriptor, options, sender=None):
        self.note("OpenURI.OpenFile", **pointed(descriptor))
        return self.answer(sender, options, 0, {})

    @dbus.service.method(portal("OpenURI"), in_signature="sha{sv}", out_signature="o", sender_keyword="sender")
    def OpenDirectory(self, parent, descriptor, options, sender=None):
        self.note("OpenURI.OpenDirectory", **pointed(descriptor))
        return self.answer(sender, options, 0, {})

    @dbus.service.method(portal("OpenURI"), in_signature="ssa{sv}", out_signature="o", sender_keyword="sender")
    def OpenURI(self, parent, uri, options, sender=None):
        self.note("OpenURI.OpenURI", uri=str(uri))
        return self.answer(sender, options, 0, {})


class Documents(Noting):
    @dbus.service.method(portal("FileTransfer"), in_signature="sa{sv}", out_signature="as")
    def RetrieveFiles(self, key, options):
        paths = self.choices["transfers"].get(str(key))
        self.note("FileTransfer.RetrieveFiles", key=str(key), answered=paths)
        if paths is None:
            raise dbus.DBusException("no such transfer", name="org.freedesktop.DBus.Error.AccessDenied")
        return dbus.Array(paths, signature="s")


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        choices = json.load(file)
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    with open(sys.argv[2], "a", encoding="utf-8") as calls:
        served = [OpenUri(bus, DESKTOP_PATH, choices, calls), Documents(bus, DOCUMENTS_PATH, choices, calls)]
        names = [dbus.service.BusName(name, bus, do_not_queue=True) for name in (DESKTOP, DOCUMENTS)]
        print("ready", flush=True)
        GLib.MainLoop().run()
        del served, names


if __name__ == "__main__":
    main()
