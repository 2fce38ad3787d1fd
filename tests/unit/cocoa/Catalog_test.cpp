// SPDX-License-Identifier: MIT
// Real bundles on a real disk.
#include "platform/darwin/catalog/CocoaCatalog.h"

#include "engine/Protection.h"
#include "tests/unit/cocoa/CocoaFixture.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

namespace vantle {
namespace {

class CocoaApplications : public CocoaTest {
 protected:
  CocoaApplications() { std::filesystem::remove_all(folder); }
  ~CocoaApplications() override { std::filesystem::remove_all(folder); }
  CocoaApplications(const CocoaApplications&) = delete;
  CocoaApplications& operator=(const CocoaApplications&) = delete;

  std::string bundle(const std::string& name, const std::string& identifier) {
    const std::filesystem::path path = folder / name;
    std::filesystem::create_directories(path / "Resources"); // where the free Foundation looks
    if (!identifier.empty()) {
      std::ofstream(path / "Resources" / "Info.plist")
          << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
          << "<key>CFBundleIdentifier</key><string>" << identifier << "</string></dict></plist>\n";
    }
    return path.string();
  }

  const std::filesystem::path folder = testing::TempDir() + "cocoa-catalog";
  CocoaCatalog catalog;
};

TEST_F(CocoaApplications, AreFoundByTheirIdentifier) {
  const std::string path = bundle("Sketch Pad.app", "org.example.SketchPad");
  EXPECT_EQ(catalog.applicationForKey("org.example.SketchPad"), std::nullopt);
  cocoa.installed["org.example.SketchPad"] = path;
  EXPECT_EQ(catalog.applicationForKey("org.example.SketchPad"),
            (InstalledApplication{"org.example.SketchPad", "Sketch Pad", path, path}));
}

TEST_F(CocoaApplications, OfANameOnlyTheVeryEndingIsTakenOff) {
  const std::string loud = bundle("Loud.APP", "org.example.Loud");
  cocoa.installed["org.example.Loud"] = loud;
  EXPECT_EQ(catalog.applicationForKey("org.example.Loud")->name, "Loud.APP");
  const std::string twice = bundle("Twice.app.app", "org.example.Twice");
  cocoa.installed["org.example.Twice"] = twice;
  EXPECT_EQ(catalog.applicationForKey("org.example.Twice")->name, "Twice.app");
}

TEST_F(CocoaApplications, ABundleThatIsPickedGoesByItsIdentifierOrItsFile) {
  const std::string known = bundle("Known.app", "org.example.Known");
  EXPECT_EQ(catalog.applicationAt(known), (InstalledApplication{"org.example.Known", "Known", known, known}));
  const std::string bare = bundle("Bare.app", "");
  EXPECT_EQ(catalog.applicationAt(bare), (InstalledApplication{"Bare", "Bare", bare, bare}));
}

TEST_F(CocoaApplications, WhatIsNoAppCannotBePicked) {
  EXPECT_EQ(catalog.applicationAt((folder / "Nothing.app").string()), std::nullopt);
  EXPECT_EQ(catalog.applicationAt(bundle("Folder", "org.example.Folder")), std::nullopt);
  std::ofstream(folder / "File.app") << "no bundle";
  EXPECT_EQ(catalog.applicationAt((folder / "File.app").string()), std::nullopt);
}

TEST_F(CocoaApplications, NoneOfTheSystemsOwnCanBePicked) {
  ASSERT_FALSE(systemBundleIDs().empty());
  for (const std::string& identifier : systemBundleIDs()) {
    EXPECT_EQ(catalog.applicationAt(bundle(identifier + ".app", identifier)), std::nullopt) << identifier;
  }
}

} // namespace
} // namespace vantle
