#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the window as a Flatpak would, without network and files, and says what was seen. Started by
scripts/sandbox-check.sh, which sees to a display and a session bus of its own.

    sandboxcheck.py PREFIX PICTURES

PREFIX holds bin/ferrow and what belongs to it; pictures of the window go into the folder PICTURES.
"""
import contextlib
import ctypes
import errno
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import dbus
import gi

gi.require_version("Atspi", "2.0")
gi.require_version("GdkPixbuf", "2.0")
from gi.repository import Atspi, GdkPixbuf, GLib

APP = "app.ferrow.Ferrow"
RUNTIME = f"/run/user/{os.getuid()}"
PATIENCE = 60  # Seconds until a state that was waited for counts as never reached; most come within one.
TRANSFER = "application/vnd.portal.filetransfer"
BORDER = 120  # Pixels; the window's own before anybody changes it.
CORNER = 60  # Pixels; what files are dragged from.
WALLS = ("NSpid", "CapEff", "NoNewPrivs", "Seccomp", "Seccomp_filters")  # As /proc names them.
HERE = pathlib.Path(__file__).parent


class Missed(Exception):
    """Something that should have been seen was not."""


def until(what, look):
    """The first true answer of look()."""
    deadline = time.monotonic() + PATIENCE
    while True:
        answer = look()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise Missed(what)
        while GLib.MainContext.default().iteration(False):
            pass
        time.sleep(0.05)


def expect(condition, what):
    if not condition:
        raise Missed(what)
    print(f"  {what}", flush=True)


# What a sandboxed program may not ask the kernel for: Flatpak's own list, for what isn't a developer's tool.
DENIED = {
    errno.EPERM: ["syslog", "uselib", "acct", "quotactl", "add_key", "keyctl", "request_key", "move_pages", "mbind",
                  "get_mempolicy", "set_mempolicy", "migrate_pages", "unshare", "setns", "mount", "umount", "umount2",
                  "pivot_root", "chroot", "perf_event_open", "ptrace", "personality"],
    errno.ENOSYS: ["clone3", "open_tree", "move_mount", "fsopen", "fsconfig", "fsmount", "fspick", "mount_setattr"],
}


class Comparison(ctypes.Structure):
    _fields_ = [("argument", ctypes.c_uint), ("operator", ctypes.c_int), ("first", ctypes.c_uint64),
                ("second", ctypes.c_uint64)]


def write_filter(path):
    """The program for the kernel that bubblewrap installs."""
    library = ctypes.CDLL("libseccomp.so.2")
    library.seccomp_init.restype = ctypes.c_void_p
    filter_ = ctypes.c_void_p(library.seccomp_init(0x7FFF0000))  # SCMP_ACT_ALLOW

    def deny(name, error, *comparisons):
        number = library.seccomp_syscall_resolve_name(name.encode())
        array = (Comparison * len(comparisons))(*comparisons)
        if number >= 0:
            library.seccomp_rule_add_array(filter_, ctypes.c_uint32(0x00050000 | error), number, len(comparisons),
                                           array)

    for error, names in DENIED.items():
        for name in names:
            deny(name, error)
    masked_equal = 7  # SCMP_CMP_MASKED_EQ
    deny("clone", errno.EPERM, Comparison(0, masked_equal, 0x10000000, 0x10000000))  # CLONE_NEWUSER
    for request in (0x5412, 0x541C):  # TIOCSTI, TIOCLINUX
        deny("ioctl", errno.EPERM, Comparison(1, masked_equal, 0xFFFFFFFF, request))
    with open(path, "wb") as file:
        if library.seccomp_export_bpf(filter_, file.fileno()) != 0:
            raise Missed("a filter of system calls can be made")
    library.seccomp_release(filter_)


class Store:
    """The document store: what the user chose, by the names that the sandbox knows it by."""

    def __init__(self, scratch, held):
        self.binds, self.outside = [], {}
        self.daemon, self.portal, self.documents, self.root = None, None, None, None
        try:
            self.start_real(scratch / "store", held)
        except (OSError, dbus.DBusException) as error:
            print(f"NOT CHECKED: the desktop's own document store; folders are bound instead. ({error})")
            self.documents = None

    def start_real(self, folder, held):
        with open("/dev/fuse", "rb+", buffering=0):
            pass
        if not shutil.which("fusermount3"):
            raise FileNotFoundError("no fusermount3")
        folder.mkdir(mode=0o700)
        environment = {**os.environ, "XDG_RUNTIME_DIR": str(folder), "XDG_DATA_HOME": str(folder / "data"),
                       "HOME": str(folder)}
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], text=True,
                                       env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        held.append(self.daemon)
        bus = dbus.bus.BusConnection(self.daemon.stdout.readline().strip())
        name = "org.freedesktop.portal.Documents"
        self.documents = dbus.Interface(bus.get_object(name, "/org/freedesktop/portal/documents"), name)
        mount = bytes(self.documents.GetMountPoint()).rstrip(b"\0").decode()
        self.portal = int(bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus").GetConnectionUnixProcessID(
            name, dbus_interface="org.freedesktop.DBus"))
        self.root = pathlib.Path(mount, "by-app", APP)
        self.binds = ["--bind", str(self.root), f"{RUNTIME}/doc"]

    def give(self, place, writable):
        """The path inside."""
        if self.documents:
            descriptor = os.open(place, os.O_PATH | os.O_CLOEXEC)
            is_folder = 8 if place.is_dir() else 0
            rights = ["read", "write"] if writable else ["read"]
            ids, _ = self.documents.AddFull([dbus.types.UnixFd(descriptor)], dbus.UInt32(is_folder), APP, rights)
            os.close(descriptor)
            return f"{RUNTIME}/doc/{ids[0]}/{place.name}"
        # Bound one by one; any number does for a name.
        inside = f"{RUNTIME}/doc/{len(self.binds) + 0x4F3A21C0:x}/{place.name}"
        self.binds += ["--bind" if writable else "--ro-bind", str(place), inside]
        self.outside[inside] = place
        return inside

    def seen(self, inside):
        """The same place as the desktop has it."""
        return self.outside.get(inside) or self.root / pathlib.Path(inside).relative_to(f"{RUNTIME}/doc")

    def close(self):
        if not self.portal:
            return
        os.kill(self.portal, signal.SIGTERM)
        deadline = time.monotonic() + PATIENCE
        while os.path.exists(f"/proc/{self.portal}") and time.monotonic() < deadline:
            time.sleep(0.05)


class Sandbox:
    """What bubblewrap is told, after the manifest in packaging/flatpak: the display, the session bus through the
    filter, and nothing else of the user's."""

    def __init__(self, prefix, scratch, store, held):
        information = scratch / "flatpak-info"
        information.write_text(f"[Application]\nname={APP}\nruntime=runtime/org.kde.Platform/x86_64/6.8\n")
        self.filter = scratch / "filter"
        write_filter(self.filter)
        bus = scratch / "bus"
        proxy = subprocess.Popen(["xdg-dbus-proxy", os.environ["DBUS_SESSION_BUS_ADDRESS"], str(bus), "--filter",
                                  f"--own={APP}", f"--own={APP}.*", "--call=org.freedesktop.portal.*=*",
                                  "--talk=org.a11y.Bus",
                                  "--broadcast=org.freedesktop.portal.*=@/org/freedesktop/portal/*"])
        held.append(proxy)
        until("the filter of the session bus is there", bus.exists)
        # Through this the check sees; a sandbox has it for screen readers.
        address = str(dbus.SessionBus().get_object("org.a11y.Bus", "/org/a11y/bus").GetAddress(
            dbus_interface="org.a11y.Bus"))
        accessibility = address.split("unix:path=")[1].split(",")[0]
        display = os.environ["DISPLAY"].removeprefix(":").split(".")[0]
        authority = os.environ.get("XAUTHORITY", "/dev/null")
        os.makedirs(scratch / "home")
        self.words = [
            "bwrap", "--unshare-user", "--unshare-pid", "--unshare-net", "--unshare-uts", "--unshare-cgroup-try",
            "--die-with-parent", "--new-session", "--clearenv", "--cap-drop", "ALL",
            "--ro-bind", "/usr", "/usr", "--symlink", "usr/bin", "/bin", "--symlink", "usr/lib", "/lib",
            "--symlink", "usr/lib64", "/lib64", "--symlink", "usr/sbin", "/sbin",
            "--ro-bind-try", "/etc/fonts", "/etc/fonts", "--ro-bind-try", "/etc/ld.so.cache", "/etc/ld.so.cache",
            "--ro-bind-try", "/etc/alternatives", "/etc/alternatives", "--proc", "/proc", "--dev", "/dev",
            "--tmpfs", "/tmp", "--dir", "/var/tmp", "--dir", f"/home/user/.var/app/{APP}",
            "--perms", "0700", "--dir", RUNTIME,
            "--ro-bind", str(prefix), "/app", "--ro-bind", str(information), "/.flatpak-info",
            "--ro-bind", str(information), f"{RUNTIME}/flatpak-info", *store.binds,
            "--bind", str(bus), f"{RUNTIME}/bus", "--bind", accessibility, accessibility,
            "--ro-bind", f"/tmp/.X11-unix/X{display}", f"/tmp/.X11-unix/X{display}",
            "--ro-bind", authority, f"{RUNTIME}/Xauthority", "--chdir", "/",
        ]
        for name, value in {"PATH": "/app/bin:/usr/bin", "HOME": "/home/user", "XDG_RUNTIME_DIR": RUNTIME,
                            "XDG_DATA_HOME": f"/home/user/.var/app/{APP}/data",
                            "XDG_CONFIG_HOME": f"/home/user/.var/app/{APP}/config",
                            "XDG_CACHE_HOME": f"/home/user/.var/app/{APP}/cache", "LANG": "C.UTF-8",
                            "DISPLAY": f":{display}", "XAUTHORITY": f"{RUNTIME}/Xauthority",
                            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={RUNTIME}/bus", "FLATPAK_ID": APP,
                            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}.items():
            self.words += ["--setenv", name, value]

    def start(self, *command, **options):
        with open(self.filter, "rb") as program:
            return subprocess.Popen([*self.words, "--seccomp", str(program.fileno()), "--", *command],
                                    pass_fds=[program.fileno()], stdin=subprocess.DEVNULL, **options)

    def ask(self, *command):
        """Its status and what it prints."""
        process = self.start(*command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        output, _ = process.communicate(timeout=PATIENCE)
        return process.returncode, output.strip()


class Window:
    """The program as a screen reader has it."""

    def __init__(self, process):
        self.process = process

    def everything(self):
        desktop = Atspi.get_desktop(0)
        left = [child for child in map(desktop.get_child_at_index, range(desktop.get_child_count()))
                if child and (child.get_name() or "").lower() == "ferrow"]
        while left:
            node = left.pop(0)
            node.clear_cache()
            yield node
            left += [child for child in map(node.get_child_at_index, range(min(node.get_child_count(), 500))) if child]

    def look(self, wanted):
        if self.process.poll() is not None:
            raise Missed(f"the window is still there; it ended with {self.process.returncode}")
        try:
            return next((node for node in self.everything() if wanted(node)), None)
        except GLib.Error:  # Gone meanwhile, or busy.
            return None

    def find(self, wanted, what):
        return until(what, lambda: self.look(wanted))

    def shown(self, text):
        return self.find(lambda node: text in (node.get_name() or "") and is_showing(node), f"“{text}” is shown")

    def texts(self):
        found = []
        for node in self.everything():
            if is_showing(node):
                found += [node.get_name() or "", node.get_description() or ""]
                if "Text" in node.get_interfaces():
                    found.append(Atspi.Text.get_text(node, 0, -1))
        return [text for text in found if text]

    def press(self, name, role=None):
        def wanted(node):
            return (node.get_name() == name and is_showing(node) and
                    "Action" in node.get_interfaces() and node.get_state_set().contains(Atspi.StateType.ENABLED) and
                    (not role or node.get_role_name() == role))
        node = self.find(wanted, f"“{name}” can be pressed")
        Atspi.Action.do_action(node, 0)
        return node


def is_showing(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def offer(key):
    """A corner of the screen from which files can be dragged, as out of a file manager that knows the portal."""
    gi.require_version("Gdk", "3.0")
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gdk, Gtk
    window = Gtk.Window(type=Gtk.WindowType.POPUP)
    window.resize(CORNER, CORNER)
    targets = [Gtk.TargetEntry.new(name, 0, 0) for name in (TRANSFER, "text/uri-list")]
    window.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, targets, Gdk.DragAction.COPY)

    def give(_widget, _context, data, _info, _time):
        is_transfer = data.get_target().name() == TRANSFER
        data.set(data.get_target(), 8, key.encode() + b"\0" if is_transfer else b"file:///nowhere/owl.jpg\r\n")

    window.connect("drag-data-get", give)
    window.show()
    print("ready", flush=True)
    Gtk.main()


def xdotool(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True)


def press_keys(keys):
    xdotool("search", "--onlyvisible", "--name", "^Ferrow$", "windowactivate", "--sync")
    xdotool("key", keys)


def processes_below(parent):
    """Names and states of all that a process has started, theirs included, after /proc."""
    states = []
    for place in pathlib.Path("/proc").glob("[0-9]*/status"):
        try:
            states.append(dict(line.split(":\t", 1) for line in place.read_text().splitlines() if ":\t" in line))
        except OSError:  # It has ended.
            continue
    below = {str(parent)}
    while more := {state["Pid"] for state in states if state["PPid"] in below} - below:
        below |= more
    return [state for state in states if state["Pid"] in below]


class Check:
    def __init__(self, prefix, pictures, scratch, held):
        self.pictures, self.scratch, self.held = pictures, scratch, held
        self.photos, self.dropped, self.framed = (scratch / name for name in ("Holidays", "Dropped", "Framed"))
        for folder in (self.photos, self.dropped, self.framed):
            folder.mkdir()
        make_photo(self.photos / "sea.jpg", (1200, 800), 0x336699FF)
        make_photo(self.photos / "hut.jpg", (800, 1200), 0x996633FF)
        make_photo(self.dropped / "owl.jpg", (600, 600), 0x669933FF)
        self.sources = self.listing(self.photos, self.dropped)
        self.calls = scratch / "calls"
        self.calls.touch()
        self.store = Store(scratch, held)
        self.chosen = self.store.give(self.framed, True)
        self.given = {place.name: self.store.give(place, False) for place in self.sources}
        choices = {"panels": {"Add Photos": [self.given["sea.jpg"], self.given["hut.jpg"]],
                              "Choose Export Folder": [self.chosen]},
                   "transfers": {"a-key": [self.given["owl.jpg"]]}}
        (scratch / "choices").write_text(json.dumps(choices))
        self.start_ready([sys.executable, HERE / "standinportal.py", scratch / "choices", self.calls])
        held.append(subprocess.Popen(["openbox"], stderr=subprocess.DEVNULL))
        self.sandbox = Sandbox(prefix, scratch, self.store, held)

    def start_ready(self, command):
        process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.held.append(process)
        if process.stdout.readline() != "ready\n":
            raise Missed(f"{command[1]} starts")
        return process

    @staticmethod
    def listing(*folders):
        return {place: (place.stat().st_size, place.stat().st_mtime_ns) for folder in folders
                for place in folder.rglob("*")}

    def called(self, method):
        """What the portal was told under that name."""
        return [call for call in map(json.loads, self.calls.read_text().splitlines()) if call["method"] == method]

    def run(self):
        print("The sandbox:")
        self.see_walls()
        print("The window in it:")
        process = self.sandbox.start("ferrow")
        self.held.append(process)
        self.window = Window(process)
        try:
            self.add_and_drop()
            self.export()
            self.replace()
            self.see_workers(process)
            self.open_photo()
            self.quit(process)
        except Missed:
            self.dump()
            take_picture(self.pictures, "missed")
            raise

    def see_walls(self):
        status, output = self.sandbox.ask("bash", "-c", "exec 3<>/dev/tcp/192.0.2.1/80")
        expect(status != 0 and "unreachable" in output, "there is no network")
        status, _ = self.sandbox.ask("test", "-e", str(self.photos))
        expect(status == 1, "the photos can't be seen where they lie")
        status, _ = self.sandbox.ask("bash", "-c", f"touch {self.chosen}/a && rm {self.chosen}/a")
        expect(status == 0, "the chosen folder can be written")
        status, output = self.sandbox.ask("ferrow-batch", "--version")
        expect(status == 0 and "Landlock" in output and "system call filter" in output,
               f"ferrow-batch --version: {output.splitlines()[-1]}")

    def add_and_drop(self):
        self.window.press("Add Photos…")
        self.window.shown("2 of 2 will be exported")
        asked = self.called("FileChooser.OpenFile")[0]
        expect(asked["multiple"] and not asked["directory"], "photos are added through the portal's panel")
        corner = self.start_ready([sys.executable, __file__, "--offer", "a-key"])
        frame = self.window.find(lambda node: node.get_role_name() == "frame", "the window has a frame")
        area = Atspi.Component.get_extents(frame, Atspi.CoordType.SCREEN)
        goal = (area.x + area.width // 2, area.y + area.height // 2)

        def drag():
            xdotool("mousemove", CORNER // 2, CORNER // 2, "mousedown", 1)
            for step in range(1, 11):
                xdotool("mousemove", *(CORNER // 2 + (to - CORNER // 2) * step // 10 for to in goal), "sleep", 0.05)
            xdotool("mouseup", 1, "sleep", 0.5)
            return self.called("FileTransfer.RetrieveFiles")

        until("the portal is asked for what was dropped", drag)
        corner.terminate()
        self.window.shown("3 of 3 will be exported")
        expect(True, "a photo is dropped through the portal's file transfer")
        take_picture(self.pictures, "photos")

    def outputs(self):
        return {place.name: GdkPixbuf.Pixbuf.get_file_info(str(place))[1:] for place in self.framed.iterdir()}

    def see_outputs(self, what):
        size = {"sea": (1200, 800), "hut": (800, 1200), "owl": (600, 600)}
        expect(self.outputs() == {f"{name}_framed.jpg": (width + 2 * BORDER, height + 2 * BORDER)
                                  for name, (width, height) in size.items()}, what)
        expect(self.listing(self.photos, self.dropped) == self.sources, "the photos are as they were")

    def see_names(self, where, wanted):
        texts = self.window.texts()
        shown = sorted({text for text in texts if wanted in text and "_framed" not in text})
        of_store = [text for text in texts if "/run/" in text or "/doc/" in text]
        said = " and ".join(f"“{text}”" for text in shown)
        expect(shown and not of_store, f"{where} it says {said}, {of_store or 'no'} path of the store")

    def export(self):
        self.window.press("Export Batch")
        self.window.press("Choose export folder")
        self.window.shown("The folder can be written")
        expect(self.called("FileChooser.OpenFile")[-1]["directory"], "the folder is chosen in the portal's panel")
        self.see_names("in the sheet", "Framed")
        take_picture(self.pictures, "export")
        self.window.press("Export 3 Photos")
        self.window.shown("3 photos exported")
        self.see_outputs("three framed photos lie in the chosen folder, as large as they should")
        self.see_names("in the report", "Framed")
        take_picture(self.pictures, "report")
        self.window.press("Show in Folder")
        until("the portal is asked to open the folder", lambda: self.called("OpenURI.OpenFile"))
        self.see_descriptor(self.called("OpenURI.OpenFile")[-1], self.chosen, "the chosen folder")
        self.window.press("Done")

    def see_descriptor(self, call, place, what):
        status = self.store.seen(place).stat()
        expect((call["device"], call["inode"]) == (status.st_dev, status.st_ino),
               f"the portal is given {what} by its descriptor")

    def replace(self):
        before = {place: place.stat().st_ino for place in self.framed.iterdir()}
        self.window.press("Export Batch")
        rule = self.window.shown("If a file exists:")
        area = Atspi.Component.get_extents(rule, Atspi.CoordType.SCREEN)
        xdotool("mousemove", area.x + area.width // 2, area.y + area.height // 2, "click", 1)
        self.window.shown("Replace")
        xdotool("key", "r", "Return")
        self.window.shown("If a file exists: Replace")
        self.window.press("Export 3 Photos")
        self.window.press("Replace and Export")
        self.window.shown("3 photos exported")
        self.see_outputs("exported again, they replace those of before, and nothing else is left")
        after = {place: place.stat().st_ino for place in self.framed.iterdir()}
        expect(all(after[place] != number for place, number in before.items()), "each is a new file under the old name")
        self.window.press("Done")

    def open_photo(self):
        until("the report is gone", lambda: not self.window.look(lambda node: node.get_name() == "Done"))
        press_keys("ctrl+alt+o")
        until("the portal is asked to show the photo, not a folder of the store",
              lambda: self.called("OpenURI.OpenDirectory"))
        self.see_descriptor(self.called("OpenURI.OpenDirectory")[-1], self.given["hut.jpg"], "the selected photo")

    def see_workers(self, process):
        self.window.press("Settings")
        note = self.window.find(lambda node: "separate processes" in (node.get_name() or "") and is_showing(node),
                                "the settings say what is missing")
        print(f"  in the settings: {note.get_name()}")
        take_picture(self.pictures, "settings")
        xdotool("key", "Escape")
        workers = [state for state in processes_below(process.pid) if state["Name"] == "ferrow-worker"]
        for state in workers:
            walls = ", ".join(f"{key} {' '.join(state[key].split())}" for key in WALLS if key in state)
            print(f"    ferrow-worker: {walls}")
        expect(workers and all(int(state["CapEff"], 16) == 0 and state["NoNewPrivs"] == "1" and state["Seccomp"] == "2"
                               for state in workers), f"{len(workers)} workers and stems run, none with any privilege")

    def quit(self, process):
        press_keys("ctrl+q")
        until("the window is closed", lambda: process.poll() is not None)
        expect(process.returncode == 0, "it ends as it should")
        expect(not processes_below(process.pid), "and so do its workers")
        self.see_outputs("the chosen folder holds what it held")

    def dump(self):
        with contextlib.suppress(GLib.Error):
            print("What is shown:", *sorted(set(self.window.texts())), sep="\n    ")
        print("What the portal was told:", self.calls.read_text(), sep="\n")


def take_picture(folder, name):
    if shutil.which("import"):
        subprocess.run(["import", "-window", "root", str(folder / f"{name}.png")], check=False)


def make_photo(place, size, color):
    picture = GdkPixbuf.Pixbuf.new(GdkPixbuf.Colorspace.RGB, False, 8, *size)
    picture.fill(color)
    picture.savev(str(place), "jpeg", ["quality"], ["90"])


def main():
    if sys.argv[1] == "--offer":
        offer(sys.argv[2])
        return
    held = []
    check = None
    try:
        check = Check(*map(pathlib.Path, sys.argv[1:4]), held)
        check.run()
    except Missed as missed:
        sys.exit(f"NOT SEEN: {missed}")
    finally:
        if check:
            check.store.close()
        for process in reversed(held):
            process.terminate()
            process.wait()


if __name__ == "__main__":
    main()
