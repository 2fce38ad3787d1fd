// SPDX-License-Identifier: MIT
// The switch for what has to stand in the desktop's shell.
#include "settings/model/ExtensionModel.h"

#include "tests/unit/settings/ScriptedExtension.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

using State = ShellExtension::State;

TEST(ExtensionModel, IsOfferedWhereTheDesktopTakesOne) {
  ScriptedExtension extension;
  const ExtensionModel model(extension);
  EXPECT_FALSE(model.isOffered());
  EXPECT_EQ(model.note(), "");
  int changes = 0;
  QObject::connect(&model, &ExtensionModel::changed, [&] { ++changes; });
  extension.answer(State::out);
  EXPECT_TRUE(model.isOffered());
  EXPECT_FALSE(model.isOn());
  EXPECT_EQ(changes, 1);
}

TEST(ExtensionModel, SaysThatItCouldNotBeInstalled) {
  ScriptedExtension extension(State::refused);
  ExtensionModel model(extension);
  EXPECT_TRUE(model.isOffered());
  EXPECT_FALSE(model.isOn());
  EXPECT_TRUE(model.note().startsWith("The extension could not be installed"));
  model.toggle();
  EXPECT_TRUE(model.isAsking()) << "it can be tried again";
}

TEST(ExtensionModel, AsksBeforeItInstalls) {
  ScriptedExtension extension(State::out);
  ExtensionModel model(extension);
  model.toggle();
  EXPECT_TRUE(model.isAsking());
  EXPECT_EQ(extension.asked, "");
  model.cancel();
  EXPECT_FALSE(model.isAsking());
  EXPECT_FALSE(model.isOn());
  EXPECT_EQ(extension.asked, "");
  model.toggle();
  model.install();
  EXPECT_FALSE(model.isAsking());
  EXPECT_EQ(extension.asked, "+");
  EXPECT_FALSE(model.isOn()) << "as long as the desktop does not say so";
  extension.answer(State::waiting);
  EXPECT_TRUE(model.isOn());
}

TEST(ExtensionModel, RemovesItAtOnce) {
  ScriptedExtension extension(State::atWork);
  ExtensionModel model(extension);
  model.toggle();
  EXPECT_EQ(extension.asked, "-");
  EXPECT_FALSE(model.isAsking());
  extension.answer(State::out);
  EXPECT_FALSE(model.isOn());
}

TEST(ExtensionModel, NobodyIsAskedAboutWhatIsInPlaceByNow) {
  ScriptedExtension extension(State::out);
  ExtensionModel model(extension);
  model.toggle();
  extension.answer(State::waiting); // the person has done it elsewhere
  EXPECT_FALSE(model.isAsking());
}

TEST(ExtensionModel, SaysWhatIsToBeDone) {
  ScriptedExtension extension(State::out);
  const ExtensionModel model(extension);
  EXPECT_TRUE(model.note().contains("Xwayland")) << "what it is without";
  extension.answer(State::waiting);
  EXPECT_TRUE(model.note().contains("Log out"));
  extension.answer(State::atWork);
  EXPECT_TRUE(model.note().contains("nobody else"));
}

TEST(ExtensionModel, LooksAgainWhenItIsToldTo) {
  ScriptedExtension extension(State::out);
  ExtensionModel model(extension);
  model.reload();
  EXPECT_EQ(extension.asked, "?");
}

} // namespace
} // namespace vantle
