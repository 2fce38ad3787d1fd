// SPDX-License-Identifier: MIT
// Vantle's extension for GNOME is put in place and taken out: real files and a real bus, with a shell and a
// settings program that answer as a test says.
#include "desktop/linux/extension/ExtensionList.h"
#include "desktop/linux/extension/GnomeShellExtension.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <QCoreApplication>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

namespace vantle::desktop {
namespace {

namespace fs = std::filesystem;
using State = ShellExtension::State;

constexpr const char* ours = "vantle@halvo.com";

TEST(ExtensionList, TakesOneInAndOut) {
  struct Case {
    const char* list;
    const char* with;
    const char* without;
  };
  for (const Case& each :
       {Case{"@as []", "['vantle@halvo.com']", "@as []"}, Case{"[]", "['vantle@halvo.com']", "@as []"},
        Case{"['a@b.c']", "['a@b.c', 'vantle@halvo.com']", "['a@b.c']"},
        Case{"['vantle@halvo.com']", "['vantle@halvo.com']", "@as []"},
        Case{"['a@b.c', 'vantle@halvo.com', 'd@e.f']", "['a@b.c', 'vantle@halvo.com', 'd@e.f']",
             "['a@b.c', 'd@e.f']"},
        Case{R"(["it's", 'a\'b, ]'])", R"(["it's", 'a\'b, ]', 'vantle@halvo.com'])",
             R"(["it's", 'a\'b, ]'])"},
        Case{R"(["'vantle@halvo.com'"])", R"(["'vantle@halvo.com'", 'vantle@halvo.com'])",
             R"(["'vantle@halvo.com'"])"}}) {
    EXPECT_EQ(withExtension(each.list, ours), each.with) << each.list;
    EXPECT_EQ(withoutExtension(each.list, ours), each.without) << each.list;
    EXPECT_TRUE(namesExtension(each.with, ours)) << each.list;
    EXPECT_FALSE(namesExtension(each.without, ours)) << each.list;
  }
}

TEST(ExtensionList, WhatIsNoListIsLeftAlone) {
  for (const char* text : {"", "[", "]", "true", "['a'", "['a]", "['a' 'b']", "['a',]", "[a]", "['a\\']",
                           "@ay []", "['a', 'b']x"}) {
    EXPECT_EQ(withExtension(text, ours), std::nullopt) << text;
    EXPECT_EQ(withoutExtension(text, ours), std::nullopt) << text;
    EXPECT_FALSE(namesExtension(text, ours)) << text;
  }
}

class ExtensionTest : public testing::Test {
 protected:
  // The toolkit's library keeps the first address that it finds for as long as the process lives.
  static void SetUpTestSuite() {
    daemon = std::make_unique<PrivateBus>();
    ::setenv("DBUS_SESSION_BUS_ADDRESS", daemon->address().c_str(), 1);
    static int count = 0;
    application = std::make_unique<QCoreApplication>(count, nullptr);
  }
  static void TearDownTestSuite() {
    application.reset();
    daemon.reset();
  }

  ExtensionTest() {
    set("enabled-extensions", "['other@example.org']");
    set("disabled-extensions", "@as []");
    m_program = m_folder.write("settings", "#!/bin/sh\nfile='" + m_folder.path().string() +
                                               "'/$3\n[ \"$1\" = get ] && exec cat \"$file\"\n"
                                               "printf '%s\\n' \"$4\" >\"$file\"\n");
    fs::permissions(m_program, fs::perms::owner_all);
  }
  void startShell(const std::string& version) {
    m_shell.emplace(daemon->address(), "org.gnome.Shell");
    m_shell->answer("/org/gnome/Shell", "Get", [version](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_append(reply, "v", "s", version.c_str());
    });
  }
  void make(bool isWayland = true) {
    m_bus.emplace();
    m_extension.emplace(*m_bus,
                        GnomeShellExtension::Place{.folder = place().string(),
                                                   .settings = QString::fromStdString(m_program.string()),
                                                   .isWayland = isWayland,
                                                   .everybodys = {everybodys().string()}});
    m_observer = m_extension->observe([this] { ++m_changes; });
  }
  // Until it has answered once more.
  void answers(const std::function<void()>& deed) const {
    const int before = m_changes;
    deed();
    require("an answer", [&] {
      QCoreApplication::processEvents();
      return m_changes > before;
    });
  }
  State reloaded() {
    answers([this] { m_extension->reload(); });
    return m_extension->state();
  }
  void becomes(State state) {
    require("the state", [&] {
      QCoreApplication::processEvents();
      return m_extension->state() == state;
    });
  }
  fs::path everybodys() const { return m_folder.path() / "usr/share/gnome-shell/extensions" / ours; }
  fs::path place() const { return m_folder.path() / "data/gnome-shell/extensions" / ours; }
  void set(const std::string& list, const std::string& text) const { m_folder.write(list, text + "\n"); }
  std::string get(const std::string& list) const { return content(m_folder.path() / list); }
  static std::string content(const fs::path& path) {
    std::ifstream file(path);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.ends_with('\n')) text.pop_back();
    return text;
  }

  static inline std::unique_ptr<PrivateBus> daemon;
  static inline std::unique_ptr<QCoreApplication> application;
  TemporaryFolder m_folder;
  fs::path m_program;
  std::optional<FakeService> m_shell;
  std::optional<SessionBus> m_bus;
  std::optional<GnomeShellExtension> m_extension;
  std::unique_ptr<Registration> m_observer;
  int m_changes = 0;
};

TEST_F(ExtensionTest, IsPutInPlaceAndTakenOutAgain) {
  startShell("43.9");
  make();
  EXPECT_EQ(m_extension->state(), State::notOffered) << "nobody has asked yet";
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::waiting);
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org', 'vantle@halvo.com']");
  EXPECT_NE(content(place() / "extension.js").find("function init()"), std::string::npos);
  EXPECT_NE(content(place() / "metadata.json").find(R"("43", "44")"), std::string::npos);
  m_extension->remove();
  becomes(State::out);
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org']");
  EXPECT_FALSE(fs::exists(place()));
}

TEST_F(ExtensionTest, EachShellGetsItsEdition) {
  for (const auto& [version, mark] :
       {std::pair{"45.0", "export default"}, {"48.7", "export default"}, {"44.10", "function init()"}}) {
    startShell(version);
    make();
    ASSERT_EQ(reloaded(), State::out) << version;
    m_extension->install();
    becomes(State::waiting);
    EXPECT_NE(content(place() / "extension.js").find(mark), std::string::npos) << version;
    m_extension->remove();
    becomes(State::out);
    m_extension.reset();
    m_shell.reset();
  }
}

TEST_F(ExtensionTest, IsAtWorkWhenItAnswers) {
  startShell("43.9");
  const FakeService inTheShell(daemon->address(), "com.halvo.vantle.shell");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::atWork);
}

TEST_F(ExtensionTest, IsOfferedInShellsThatItWasMadeForOnly) {
  make();
  EXPECT_EQ(reloaded(), State::notOffered) << "no shell";
  for (const char* version : {"42.9", "50.0", "", "garbage"}) {
    startShell(version);
    EXPECT_EQ(reloaded(), State::notOffered) << version;
    m_extension->install();
    EXPECT_FALSE(fs::exists(place())) << version;
    m_shell.reset();
  }
}

TEST_F(ExtensionTest, IsNotOfferedOnX11) {
  startShell("43.9");
  make(false);
  m_extension->reload();
  EXPECT_EQ(m_shell->calls("Get"), 0);
  EXPECT_EQ(m_extension->state(), State::notOffered);
}

TEST_F(ExtensionTest, WhatThePersonHasSwitchedOffElsewhereIsSwitchedOnAgain) {
  startShell("43.9");
  set("disabled-extensions", "['vantle@halvo.com', 'other@example.org']");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::waiting);
  EXPECT_EQ(get("disabled-extensions"), "['other@example.org']");
}

TEST_F(ExtensionTest, WhatIsListedWithoutItsFilesIsOut) {
  startShell("43.9");
  set("enabled-extensions", "['vantle@halvo.com']");
  make();
  EXPECT_EQ(reloaded(), State::out);
}

TEST_F(ExtensionTest, FilesOfAnEarlierEditionAreReplaced) {
  startShell("44.1");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::waiting);
  m_extension.reset();
  m_shell.reset();
  startShell("48.7"); // the system was upgraded
  make();
  EXPECT_EQ(reloaded(), State::waiting);
  EXPECT_NE(content(place() / "extension.js").find("export default"), std::string::npos);
  EXPECT_NE(content(place() / "metadata.json").find(R"("48")"), std::string::npos);
}

// As a package does, for everybody; only what is listed is switched on then.
TEST_F(ExtensionTest, WhatIsInstalledForEverybodyIsOnlySwitched) {
  startShell("48.7");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::waiting);
  fs::create_directories(everybodys().parent_path());
  fs::rename(place(), everybodys());
  EXPECT_EQ(reloaded(), State::waiting);
  m_extension->remove();
  becomes(State::out);
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org']");
  m_extension->install();
  becomes(State::waiting);
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org', 'vantle@halvo.com']");
  EXPECT_FALSE(fs::exists(place()));
  m_extension->remove();
  becomes(State::out);
  EXPECT_TRUE(fs::exists(everybodys() / "extension.js"));
}

TEST_F(ExtensionTest, WhatIsInstalledForEverybodyAndForAnotherShellDoesNotCount) {
  startShell("43.9");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_folder.folder("usr/share/gnome-shell/extensions/" + std::string(ours));
  std::ofstream(everybodys() / "extension.js") << "of another Vantle";
  std::ofstream(everybodys() / "metadata.json") << "{}";
  m_extension->install();
  becomes(State::waiting);
  EXPECT_TRUE(fs::exists(place() / "extension.js"));
}

TEST_F(ExtensionTest, OfManyWishesTheLastCounts) {
  startShell("43.9");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  m_extension->remove();
  m_extension->install();
  m_extension->remove();
  m_extension->install();
  becomes(State::waiting);
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org', 'vantle@halvo.com']");
  m_extension->remove();
  m_extension->install();
  m_extension->remove();
  becomes(State::out);
  EXPECT_FALSE(fs::exists(place()));
}

TEST_F(ExtensionTest, WithoutTheSettingsProgramNothingIsOn) {
  startShell("43.9");
  m_program = m_folder.path() / "missing";
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  EXPECT_EQ(m_extension->state(), State::refused);
  EXPECT_FALSE(fs::exists(place()));
}

TEST_F(ExtensionTest, AListThatCannotBeReadIsLeftAlone) {
  startShell("43.9");
  set("enabled-extensions", "no list");
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  EXPECT_EQ(get("enabled-extensions"), "no list");
  EXPECT_EQ(m_extension->state(), State::refused);
  EXPECT_FALSE(fs::exists(place()));
}

TEST_F(ExtensionTest, AfterARefusalItCanBeTriedAgain) {
  startShell("43.9");
  set("enabled-extensions", "no list");
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  ASSERT_EQ(m_extension->state(), State::refused);
  set("enabled-extensions", "@as []");
  m_extension->install();
  becomes(State::waiting);
  m_extension->remove();
  becomes(State::out);
}

TEST_F(ExtensionTest, ALinkedFolderAndWhatItLeadsToStayAsTheyAre) {
  startShell("43.9");
  m_folder.folder("precious");
  m_folder.write("precious/extension.js", "mine");
  fs::create_directories(place().parent_path());
  fs::create_directory_symlink(m_folder.path() / "precious", place());
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  EXPECT_EQ(m_extension->state(), State::refused);
  m_extension->remove();
  becomes(State::out);
  EXPECT_EQ(content(m_folder.path() / "precious/extension.js"), "mine");
}

TEST_F(ExtensionTest, ALinkedFileAndWhatItLeadsToStayAsTheyAre) {
  startShell("43.9");
  m_folder.write("precious", "mine");
  fs::create_directories(place());
  fs::create_symlink(m_folder.path() / "precious", place() / "extension.js");
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  EXPECT_EQ(m_extension->state(), State::refused);
  EXPECT_EQ(content(m_folder.path() / "precious"), "mine");
  EXPECT_TRUE(fs::is_symlink(place() / "extension.js"));
}

// The shell would run what somebody else puts there.
TEST_F(ExtensionTest, AFolderThatOthersMayWriteToHoldsNoExtension) {
  startShell("43.9");
  fs::create_directories(place());
  fs::permissions(place(), fs::perms::all);
  make();
  ASSERT_EQ(reloaded(), State::out);
  answers([this] { m_extension->install(); });
  EXPECT_EQ(m_extension->state(), State::refused);
  EXPECT_FALSE(fs::exists(place() / "extension.js"));
  EXPECT_EQ(get("enabled-extensions"), "['other@example.org']");
}

TEST_F(ExtensionTest, WhatSomebodyElseHasPutBesideItStays) {
  startShell("43.9");
  make();
  ASSERT_EQ(reloaded(), State::out);
  m_extension->install();
  becomes(State::waiting);
  std::ofstream(place() / "notes") << "mine";
  m_extension->remove();
  becomes(State::out);
  EXPECT_FALSE(fs::exists(place() / "extension.js"));
  EXPECT_EQ(content(place() / "notes"), "mine");
}

} // namespace
} // namespace vantle::desktop
