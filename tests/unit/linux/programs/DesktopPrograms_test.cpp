// SPDX-License-Identifier: MIT
#include "platform/linux/programs/DesktopPrograms.h"

#include "engine/Protection.h"
#include "platform/linux/programs/ProgramTable.h"

#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vantle {
namespace {

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> list;
  for (std::string word; stream >> word;) list.push_back(word);
  return list;
}

TEST(SystemPart, IsKnownByTheKernelsNameForIt) {
  for (const std::string& name :
       words("(sd-pam) Hyprland X Xephyr Xnest Xorg Xorg.bin Xtigervnc Xvfb Xvnc Xwayland at-spi-bus-laun "
             "awesome bspwm budgie-daemon budgie-panel budgie-session budgie-wm cage cinnamon "
             "cinnamon-sessio compiz compton cosmic-comp cosmic-session dbus-broker dbus-broker-lau "
             "dbus-daemon dwl dwm elogind enlightenment fcitx fcitx5 fluxbox gala gamescope gdm-session-wor "
             "gdm-wayland-ses gdm-x-session gdm3 gnome-keyring-d gnome-session-b gnome-session-i "
             "gnome-session-s gnome-shell herbstluftwm i3 ibus-daemon icewm icewm-session init jackd "
             "jackdbus jwm kded5 kded6 kdeinit5 kglobalaccel5 kglobalacceld ksmserver kwin_wayland "
             "kwin_wayland_wr kwin_x11 labwc lightdm lxsession marco mate-session metacity muffin mutter mwm "
             "niri openbox picom pipewire pipewire-media- pipewire-pulse plasma_session plasmashell polkitd "
             "pulseaudio qtile river sddm seatd sndiod startplasma-way startplasma-x11 sway systemd "
             "systemd-executo systemd-logind systemd-userdbd twm wayfire weston wireplumber wmaker "
             "xdg-desktop-por xdg-document-po xfce4-session xfwm4 xinit xmonad xmonad-x86_64-l xss-lock")) {
    EXPECT_TRUE(isSystemPart(name)) << name;
  }
}

TEST(SystemPart, IsKnownWhereItsNameIsCutOffAfterADash) {
  for (const std::string& name : words("at-spi2-registr lxqt-session sddm-helper xdg-permission-"))
    EXPECT_TRUE(isSystemPart(name)) << name;
}

TEST(SystemPart, IsWhateverStartsAppsAndStaysTheirParent) {
  for (const std::string& name :
       words("sxhkd xbindkeys swhkd jgmenu dmenu_run rofi krunner lxqt-globalkeys gnome-session-c "
             "gsd-media-keys csd-media-keys xfsettingsd polkit-gnome-au xfce4-panel swaylock")) {
    EXPECT_TRUE(isSystemPart(name)) << name;
  }
}

TEST(SystemPart, IsNothingElse) {
  for (const std::string& name :
       words("session helper spi2-registr registr at- lxqt- sddm- xdg- permission- lxqt xdg "
             "at-spi2-registryd xdg-permission-store gnome-session-binary pipewir pipewire-puls Pipewire "
             "thunar nautilus gnome-control-c gnome-system-mo plasma-systemmo xfce4-settings- "
             "mate-notificati dunst tint2 firefox game")) {
    EXPECT_FALSE(isSystemPart(name)) << name;
  }
  for (const char* name : {"", " ", "  ", "sway i3", " sway"}) EXPECT_FALSE(isSystemPart(name)) << name;
}

TEST(Starter, IsAShellAndItsLike) {
  for (const std::string& name :
       words("sh bash dash zsh fish tcsh busybox env nohup setsid xargs sudo su doas login sshd sshd-session "
             "tmux screen script make ninja startx")) {
    EXPECT_TRUE(isStarter(name)) << name;
    EXPECT_FALSE(isSystemPart(name)) << name;
  }
  EXPECT_TRUE(isStarter("tmux: server")) << "as the kernel has it";
}

TEST(Starter, IsNothingElse) {
  for (const std::string& name :
       words("tmuxinator bas bashful zshx steam firefox xterm konsole python3 wine sway systemd "
             "gnome-session-b SH")) {
    EXPECT_FALSE(isStarter(name)) << name;
  }
  for (const char* name : {"", " ", " sh"}) EXPECT_FALSE(isStarter(name)) << name;
}

TEST(ShellComponent, IsKnownByItsFile) {
  for (const std::string& name :
       words("gnome-shell gnome-panel gnome-flashback plasmashell latte-dock xfce4-panel mate-panel lxpanel "
             "lxqt-panel cinnamon budgie-panel budgie-wm wingpanel plank cairo-dock docky tint2 polybar "
             "lemonbar dzen2 xmobar i3bar swaybar waybar fbpanel perlpanel trayer stalonetray conky "
             "gala-daemon xfdesktop nautilus-desktop nemo-desktop caja-desktop rox-filer-pinboard idesk "
             "desktop-icons openbox xfwm4 mutter metacity marco muffin gala kwin_x11 kwin_wayland compiz i3 "
             "sway bspwm awesome fluxbox blackbox icewm jwm fvwm fvwm2 fvwm3 enlightenment "
             "enlightenment_start xmonad dwm picom compton gnome-session-binary ksmserver xfce4-session "
             "mate-session lxsession lxqt-session cinnamon-session-binary xfsettingsd xfce4-power-manager "
             "mate-power-manager kded5 kded6 onboard florence krunner rofi dmenu xfce4-appfinder xfrun4 "
             "ulauncher synapse albert wofi dunst xfce4-notifyd notification-daemon mate-notification-daemon "
             "lxqt-notificationd mako light-locker xscreensaver xfce4-screensaver mate-screensaver "
             "cinnamon-screensaver gnome-screensaver kscreenlocker_greet i3lock swaylock gcr-prompter "
             "ssh-askpass lxpolkit lxqt-policykit-agent")) {
    EXPECT_TRUE(isShellComponent(name)) << name;
  }
}

TEST(ShellComponent, IsKnownByItsFamily) {
  for (const std::string& name :
       words("polkit-gnome-authentication-agent-1 polkit-kde-authentication-agent-1 "
             "ukui-polkit-authentication-agent-1 xdg-desktop-portal xdg-desktop-portal-gtk nm-applet "
             "pinentry-gtk-2 "
             "ibus-ui-gtk3 fcitx5 gsd-media-keys msd-xrandr csd-power at-spi2-registryd gnome-keyring-daemon "
             "blueman-applet blueman-tray org_kde_powerdevil")) {
    EXPECT_TRUE(isShellComponent(name)) << name;
  }
}

TEST(ShellComponent, StartsAppsByKeyOrMenu) {
  for (const std::string& name : words("sxhkd xbindkeys swhkd jgmenu lxsession xfce4-session gnome-session "
                                       "gnome-session-binary gnome-session-service dmenu_run")) {
    EXPECT_TRUE(isShellComponent(name)) << name;
  }
}

TEST(ShellComponent, IsNoApp) {
  for (const std::string& name :
       words("xterm mousepad firefox nautilus pcmanfm steam blueman-manager sgt-blackbox "
             "i3-game swayland gamescope cage weston Xephyr gnome-control-center lxtask "
             "gnome-session-inhibit gnome-session-b")) {
    EXPECT_FALSE(isShellComponent(name)) << name;
  }
  EXPECT_FALSE(isShellComponent(""));
}

TEST(SystemIdentifier, IsWhatTheProgramIsOnItsDesktop) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"com.apple.finder",
       "nautilus dolphin thunar Thunar caja nemo pcmanfm pcmanfm-qt xfdesktop nemo-desktop"},
      {"com.apple.dock", "plank latte-dock cairo-dock docky"},
      {"com.apple.systemuiserver",
       "gnome-shell plasmashell cinnamon xfce4-panel wrapper-2.0 mate-panel lxpanel "
       "lxqt-panel tint2 polybar waybar trayer stalonetray"},
      {"com.apple.controlcenter", "gnome-control-center systemsettings xfce4-settings-manager "
                                  "xfce4-display-settings mate-control-center "
                                  "mate-mouse-properties cinnamon-settings cinnamon-settings.py lxqt-config "
                                  "lxqt-config-monitor lxappearance"},
      {"com.apple.notificationcenterui",
       "dunst mako xfce4-notifyd notification-daemon mate-notification-daemon "
       "lxqt-notificationd"},
      {"com.apple.ActivityMonitor", "gnome-system-monitor plasma-systemmonitor ksysguard xfce4-taskmanager "
                                    "mate-system-monitor lxtask qps missioncenter"},
      {"com.apple.loginwindow",
       "i3lock xscreensaver light-locker kscreenlocker_greet cinnamon-screensaver-main.py "
       "lightdm-gtk-greeter slick-greeter sddm-greeter gnome-session-binary ksmserver "
       "xfce4-session mate-session lxqt-session lxsession cinnamon-session"},
  };
  for (const auto& [identifier, names] : cases) {
    for (const std::string& name : words(names))
      EXPECT_EQ(systemIdentifierOfProgram(name), identifier) << name;
  }
}

TEST(SystemIdentifier, IsFoundByTheDesktopFile) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"com.apple.finder",
       "org.gnome.Nautilus org.kde.dolphin thunar caja caja-browser nemo pcmanfm pcmanfm-qt"},
      {"com.apple.controlcenter", "org.gnome.Settings org.gnome.tweaks systemsettings kdesystemsettings "
                                  "xfce-settings-manager matecc cinnamon-settings lxqt-config"},
      {"com.apple.ActivityMonitor",
       "gnome-system-monitor gnome-system-monitor-kde org.gnome.SystemMonitor org.kde.plasma-systemmonitor "
       "xfce4-taskmanager mate-system-monitor lxtask qps net.nokyan.Resources "
       "io.missioncenter.MissionCenter"},
  };
  for (const auto& [identifier, ids] : cases) {
    for (const std::string& id : words(ids)) EXPECT_EQ(systemIdentifierOfDesktopId(id), identifier) << id;
  }
}

TEST(SystemIdentifier, IsNothingThatAnAppHas) {
  for (const std::string& name :
       words("konqueror resources openbox gamescope gnome-session-inhibit krunner ksystemlog "
             "dolphin-emu org.DolphinEmu.dolphin-emu Nautilus org.gnome.Maps thuna "
             "gnome-control-c pipewire conky firefox python3.11")) {
    EXPECT_EQ(systemIdentifierOfProgram(name), std::nullopt) << name;
    EXPECT_EQ(systemIdentifierOfDesktopId(name), std::nullopt) << name;
  }
  EXPECT_EQ(systemIdentifierOfProgram(""), std::nullopt);
  EXPECT_EQ(systemIdentifierOfProgram("org.gnome.Nautilus"), std::nullopt) << "an id is no program";
  EXPECT_EQ(systemIdentifierOfDesktopId(""), std::nullopt);
}

TEST(ProgramTable, StandsForTheEnginesSystemApps) {
  std::set<std::string> known;
  for (const programTable::Row& row : programTable::programs) {
    if (!row.systemIdentifier.empty()) known.emplace(row.systemIdentifier);
  }
  EXPECT_EQ(known, systemBundleIDs());
  for (const programTable::Row& row : programTable::desktopIds) {
    EXPECT_TRUE(systemBundleIDs().contains(std::string(row.systemIdentifier))) << row.name;
  }
}

} // namespace
} // namespace vantle
