// SPDX-License-Identifier: MIT
#include "tests/support/XfceTray.h"

namespace vantle::desktop {

namespace {

constexpr const char* settings = R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)";

} // namespace

XfceTray::XfceTray(VirtualDesktop& desktop) : m_desktop(desktop) {
  desktop.folder().write("home/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml", settings);
  desktop.launch({"/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd"});
  desktop.waitForBusName("org.xfce.Xfconf");
}

Program& XfceTray::start() {
  Program& panel = m_desktop.launch({"xfce4-panel", "--disable-wm-check"});
  m_desktop.waitForBusName("org.kde.StatusNotifierWatcher");
  return panel;
}

} // namespace vantle::desktop
