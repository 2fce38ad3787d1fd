// SPDX-License-Identifier: MIT
// The dark theme and the icon theme that a desktop's own settings program publishes on the X server.
#include "desktop/linux/scheme/FontAndScale.h"
#include "desktop/linux/scheme/PublishedSettings.h"
#include "tests/desktop/HostedPanel.h"
#include "tests/support/XfceTray.h"

#include <gtest/gtest.h>

namespace vantle::desktop {
namespace {

std::string number(std::uint32_t value, std::size_t width, bool isBig) {
  std::string bytes;
  for (std::size_t at = 0; at < width; ++at)
    bytes += static_cast<char>(value >> (8U * (isBig ? width - 1 - at : at)));
  return bytes;
}

std::string padded(std::string text) {
  text.resize((text.size() + 3) / 4 * 4);
  return text;
}

// A text, a colour and a number.
std::string sample(bool isBig) {
  const auto head = [isBig](char type, const std::string& name) {
    return std::string(1, type) + std::string(1, '\0') +
           number(static_cast<std::uint32_t>(name.size()), 2, isBig) + padded(name) + number(7, 4, isBig);
  };
  return std::string(1, isBig ? '\1' : '\0') + std::string(3, '\0') + number(9, 4, isBig) +
         number(3, 4, isBig) + head(1, "Net/ThemeName") + number(12, 4, isBig) + padded("Adwaita-dark") +
         head(2, "Net/Color") + std::string(8, 'c') + head(0, "Xft/DPI") + number(0xFFFFFFFF, 4, isBig);
}

TEST(PublishedSettings, AreReadInBothOrdersOfBytes) {
  for (const bool isBig : {false, true}) {
    const PublishedSettings read = readPublishedSettings(sample(isBig));
    EXPECT_EQ(read.texts, (std::map<std::string, std::string>{{"Net/ThemeName", "Adwaita-dark"}}));
    EXPECT_EQ(read.numbers, (std::map<std::string, std::int32_t>{{"Xft/DPI", -1}}));
  }
}

TEST(PublishedSettings, CutOffAnywhereAreReadAsFarAsTheyGo) {
  const std::string whole = sample(false);
  const std::size_t endOfText = 12 + 4 + 16 + 4 + 4 + 12;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const PublishedSettings read = readPublishedSettings(whole.substr(0, length));
    EXPECT_EQ(read.texts.size(), length >= endOfText ? 1U : 0U) << length;
    EXPECT_TRUE(read.numbers.empty()) << length;
  }
  std::string endless = whole;
  endless.replace(8, 4, "\xff\xff\xff\xff");
  EXPECT_EQ(readPublishedSettings(endless), readPublishedSettings(whole));
  std::string tooLong = whole;
  tooLong.replace(endOfText - 16, 4, "\xff\xff\xff\xff");
  EXPECT_EQ(readPublishedSettings(tooLong), PublishedSettings());
}

TEST(PublishedSettings, SayInWhichFontAndHowLargeToDraw) {
  const auto lookOf = [](const std::string& font, std::int32_t dots) {
    return textLookOf({.texts = {{"Gtk/FontName", font}}, .numbers = {{"Xft/DPI", dots * 1024}}});
  };
  EXPECT_EQ(lookOf("Noto Sans 10", 96), (TextLook{"Noto Sans", 1, 1}));
  EXPECT_EQ(lookOf("Noto Sans Bold Italic 24", 144), (TextLook{"Noto Sans", 1.5, 2.4}));
  EXPECT_EQ(lookOf("Sans", 72), (TextLook{"Sans", 1, 1})) << "never smaller than can be read";
  EXPECT_EQ(lookOf("Serif 4000", 1 << 20), (TextLook{"Serif", 4, 3})) << "nor larger than any screen";
  EXPECT_EQ(lookOf("  11 ", -1), (TextLook{{}, std::nullopt, 1}));
  EXPECT_EQ(textLookOf({}), TextLook());
}

class OnXfce : public testing::Test, public HostedPanel {
 protected:
  void choose(const std::string& property, const std::string& value) {
    ASSERT_TRUE(
        desktop.run({"xfconf-query", "-c", "xsettings", "-p", property, "-n", "-t", "string", "-s", value}));
  }
  bool becomes(const std::string& scheme) {
    const long before = countOf(scheme);
    return waitUntil([&] {
      tells("scheme");
      return countOf(scheme) > before;
    });
  }

  VirtualDesktop desktop;
  XfceTray tray{desktop};
};

TEST_F(OnXfce, TheThemesAreFollowedFromTheStartAndLater) {
  for (const char* theme : {"Tango", "gnome"})
    desktop.folder().write(std::string("home/.icons/") + theme + "/index.theme", "[Icon Theme]\nName=Some\n");
  choose("/Net/ThemeName", "Adwaita-dark");
  choose("/Net/IconThemeName", "Tango");
  Program& first = desktop.launch({"xfsettingsd", "--no-daemon"});
  startHost(desktop, {{"QT_QPA_PLATFORM", "xcb"}});
  EXPECT_TRUE(becomes("scheme dark Tango"));
  choose("/Net/ThemeName", "Adwaita");
  choose("/Net/IconThemeName", "gnome");
  EXPECT_TRUE(becomes("scheme light gnome"));
  choose("/Net/ThemeName", "HighContrastInverse");
  choose("/Net/IconThemeName", "NoThemeOfThisName");
  EXPECT_TRUE(becomes("scheme dark gnome")) << "what is not installed is not taken";
  first.kill();
  choose("/Net/ThemeName", "Adwaita-dark");
  desktop.launch({"xfsettingsd", "--no-daemon"});
  EXPECT_TRUE(becomes("scheme dark gnome"));
}

// "Not dark" of Xfce's panel means as the theme is.
TEST_F(OnXfce, TheIconCanBeReadOnAPanelThatIsDarkByTheTheme) {
  desktop.folder().write("home/.themes/Black-dark/gtk-3.0/gtk.css", "* { background: #101010; }");
  choose("/Net/ThemeName", "Black-dark");
  ASSERT_TRUE(desktop.run({"xfconf-query", "-c", "xfce4-panel", "-p", "/panels/dark-mode", "-s", "false"}));
  desktop.launch({"xfsettingsd", "--no-daemon"});
  tray.start();
  startHost(desktop, {{"QT_QPA_PLATFORM", "xcb"}});
  const auto isLight = [](std::uint32_t pixel) {
    return (pixel & 0xffU) > 0xc0 && (pixel >> 8U & 0xffU) > 0xc0 && (pixel >> 16U & 0xffU) > 0xc0;
  };
  const auto lightPixels = [&] {
    int count = 0;
    for (int x = 0; x < 2 * XfceTray::iconX; ++x)
      for (int y = 0; y < 2 * XfceTray::iconY; ++y) count += isLight(desktop.windows().pixel(x, y)) ? 1 : 0;
    return count;
  };
  // A bolt's worth of them, not a whole light bar.
  EXPECT_TRUE(waitUntil([&] {
    const int count = lightPixels();
    return count > 5 && count < 200;
  })) << lightPixels();
}

} // namespace
} // namespace vantle::desktop
