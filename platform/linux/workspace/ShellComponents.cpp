// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/ShellComponents.h"

#include <algorithm>
#include <array>

namespace vantle {

namespace {

// Programs whose windows belong to the desktop, whatever their type says.
constexpr std::array components = std::to_array<std::string_view>(
    {// shells, panels, docks and bars
     "gnome-shell", "gnome-panel", "gnome-flashback", "plasmashell", "latte-dock", "xfce4-panel",
     "mate-panel", "lxpanel", "lxqt-panel", "cinnamon", "budgie-panel", "budgie-wm", "wingpanel", "plank",
     "cairo-dock", "docky", "tint2", "polybar", "lemonbar", "dzen2", "xmobar", "i3bar", "swaybar", "waybar",
     "fbpanel", "perlpanel", "trayer", "stalonetray", "conky", "gala-daemon",
     // desktops; pcmanfm and its like are recognised by the desktop window that they own
     "xfdesktop", "nautilus-desktop", "nemo-desktop", "caja-desktop", "rox-filer-pinboard", "idesk",
     "desktop-icons",
     // window managers and compositors
     "openbox", "xfwm4", "mutter", "metacity", "marco", "muffin", "gala", "kwin_x11", "kwin_wayland",
     "compiz", "i3", "sway", "bspwm", "awesome", "fluxbox", "blackbox", "icewm", "jwm", "fvwm", "fvwm2",
     "fvwm3", "enlightenment", "enlightenment_start", "xmonad", "dwm", "picom", "compton",
     // sessions, settings, keyboards
     "gnome-session-binary", "ksmserver", "xfce4-session", "mate-session", "lxsession", "lxqt-session",
     "cinnamon-session-binary", "xfsettingsd", "xfce4-power-manager", "mate-power-manager", "kded5", "kded6",
     "onboard", "florence",
     // launchers
     "krunner", "rofi", "dmenu", "xfce4-appfinder", "xfrun4", "ulauncher", "synapse", "albert", "wofi",
     // notices
     "dunst", "xfce4-notifyd", "notification-daemon", "mate-notification-daemon", "lxqt-notificationd",
     "mako",
     // locks and passwords
     "light-locker", "xscreensaver", "xfce4-screensaver", "mate-screensaver", "cinnamon-screensaver",
     "gnome-screensaver", "kscreenlocker_greet", "i3lock", "swaylock", "gcr-prompter", "ssh-askpass",
     "lxpolkit", "lxqt-policykit-agent"});

// Families of such programs.
constexpr std::array families = std::to_array<std::string_view>(
    {"polkit-", "xdg-desktop-portal", "ibus-", "fcitx", "gsd-", "msd-", "csd-", "pinentry", "nm-applet",
     "blueman-applet", "blueman-tray", "at-spi", "gnome-keyring", "org_kde_powerdevil"});

constexpr std::array<std::string_view, 2> shellTypes{"DOCK", "DESKTOP"};
constexpr std::array<std::string_view, 6> passingTypes{"NOTIFICATION", "TOOLTIP", "DROPDOWN_MENU",
                                                       "POPUP_MENU",   "COMBO",   "DND"};
constexpr std::array<std::string_view, 6> ordinaryTypes{"NORMAL", "DIALOG",  "UTILITY",
                                                        "SPLASH", "TOOLBAR", "MENU"};

template <class List> bool holds(const List& list, std::string_view item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

} // namespace

WindowKind windowKindOf(std::span<const std::string> types) {
  for (const std::string& type : types) {
    if (holds(shellTypes, type)) return WindowKind::shell;
    if (holds(passingTypes, type)) return WindowKind::passing;
    if (holds(ordinaryTypes, type)) return WindowKind::ordinary;
  }
  return WindowKind::ordinary;
}

bool isShellComponent(std::string_view fileName) {
  // polkit-kde-authentication-agent-1, polkit-mate-authentication-agent-1, …
  return holds(components, fileName) || fileName.find("-authentication-agent-") != std::string_view::npos ||
         std::any_of(families.begin(), families.end(),
                     [&](std::string_view family) { return fileName.starts_with(family); });
}

} // namespace vantle
