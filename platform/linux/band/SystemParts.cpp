// SPDX-License-Identifier: MIT
#include "platform/linux/band/SystemParts.h"

#include <string>

namespace vantle {

namespace {

// At most 15 bytes each, as the kernel cuts them off.
constexpr std::string_view names =
    " (sd-pam) Hyprland X Xephyr Xnest Xorg Xorg.bin Xtigervnc Xvfb Xvnc Xwayland at-spi-bus-laun at-"
    " spi2-registr awesome bspwm budgie-daemon budgie-panel budgie-session budgie-wm cage cinnamon"
    " cinnamon-sessio compiz compton cosmic-comp cosmic-session dbus-broker dbus-broker-lau dbus-daemon"
    " dwl dwm elogind enlightenment fcitx fcitx5 fluxbox gala gamescope gdm-session-wor gdm-wayland-ses"
    " gdm-x-session gdm3 gnome-keyring-d gnome-session-b gnome-session-i gnome-session-s gnome-shell"
    " herbstluftwm i3 ibus-daemon icewm icewm-session init jackd jackdbus jwm kded5 kded6 kdeinit5"
    " kglobalaccel5 kglobalacceld ksmserver kwin_wayland kwin_wayland_wr kwin_x11 labwc lightdm lxqt-"
    " session lxsession marco mate-session metacity muffin mutter mwm niri openbox picom pipewire"
    " pipewire-media- pipewire-pulse plasma_session plasmashell polkitd pulseaudio qtile river sddm sddm-"
    " helper seatd sndiod startplasma-way startplasma-x11 sway systemd systemd-executo systemd-logind"
    " systemd-userdbd twm wayfire weston wireplumber wmaker xdg-desktop-por xdg-document-po xdg-"
    " permission- xfce4-session xfwm4 xinit xmonad xmonad-x86_64-l xss-lock"
    " ";

} // namespace

bool isSystemPart(std::string_view processName) {
  if (processName.empty() || processName.find(' ') != std::string_view::npos) return false;
  return names.find(' ' + std::string(processName) + ' ') != std::string_view::npos;
}

} // namespace vantle
