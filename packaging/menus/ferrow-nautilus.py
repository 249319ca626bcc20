# SPDX-License-Identifier: GPL-3.0-or-later
"""In the menu of Nautilus: "Frame with Ferrow…", for photos and folders. Nautilus runs it by nautilus-python."""

from gi.repository import Gio, GObject, Nautilus

TYPES = "image/jpeg;image/png;image/tiff;image/heif;image/heic;inode/directory;".split(";")[:-1]


class FerrowMenu(GObject.GObject, Nautilus.MenuProvider):
    def get_file_items(self, *words):
        # Before version 4 the window comes first.
        files = words[-1]
        if not files or any(file.get_mime_type() not in TYPES or not file.get_location().get_path() for file in files):
            return []
        item = Nautilus.MenuItem(name="FerrowMenu::frame", label="Frame with Ferrow…", tip="Put photos into frames")
        item.connect("activate", self.frame, files)
        return [item]

    def frame(self, _item, files):
        # By its entry, so that photos join the window that is open.
        entry = Gio.DesktopAppInfo.new("app.ferrow.Ferrow.desktop")
        if entry:
            entry.launch_uris([file.get_uri() for file in files], None)
