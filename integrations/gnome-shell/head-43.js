// SPDX-License-Identifier: MIT
// For GNOME Shell up to 44.
const {Clutter, GdkPixbuf, Gio, GLib, Meta, St} = imports.gi;
const Main = imports.ui.main;
const PanelMenu = imports.ui.panelMenu;
