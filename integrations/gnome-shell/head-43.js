// SPDX-License-Identifier: MIT
// For GNOME Shell up to 44.
const {Clutter, Gio, GLib, Meta} = imports.gi;
const Main = imports.ui.main;
