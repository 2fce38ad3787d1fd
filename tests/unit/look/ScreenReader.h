// SPDX-License-Identifier: MIT
#pragma once

#include <QAccessible>
#include <QWindow>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace vantle {

// A line in which nothing is called by a name that it has on a Mac alone.
inline auto ofNoMac() {
  using testing::HasSubstr;
  return testing::Not(testing::AnyOf(HasSubstr("Mac"), HasSubstr("App Store"), HasSubstr("menu bar")));
}

// What a screen reader is told about a window: a line "ROLE: NAME, STATE …" for everything that is seen in
// it. It fails the test when something that the keyboard can reach has no name, an action is offered twice,
// or a control's own text is told once more within it. (That texts say they take the keyboard, which they do
// not, is the toolkit's doing: it does so for each of that role, whatever the text itself says.)
class ScreenReader {
 public:
  ScreenReader() { QAccessible::setActive(true); }

  static std::set<std::string> linesOf(QWindow* window) {
    std::set<std::string> lines;
    collect(QAccessible::queryAccessibleInterface(window), lines);
    return lines;
  }

 private:
  static void collect(QAccessibleInterface* item, std::set<std::string>& lines) {
    if (item == nullptr || item->state().invisible) return;
    const std::string name = item->text(QAccessible::Name).toStdString();
    std::string line = roleName(item->role()) + ": " + name;
    if (item->state().checked) line += ", checked";
    if (item->state().selected) line += ", selected";
    const bool named = !name.empty() || item->role() == QAccessible::Window;
    EXPECT_TRUE(named || !item->state().focusable) << line;
    expectPlain(*item, line);
    lines.insert(line);
    for (int child = 0; child < item->childCount(); ++child) collect(item->child(child), lines);
  }

  static bool isText(QAccessibleInterface& item) {
    return item.role() == QAccessible::StaticText || item.role() == QAccessible::Heading;
  }

  static void expectPlain(QAccessibleInterface& item, const std::string& line) {
    const bool isSwitch = item.role() == QAccessible::CheckBox || item.role() == QAccessible::RadioButton;
    if (QAccessibleActionInterface* const actions = item.actionInterface()) {
      QStringList names = actions->actionNames();
      EXPECT_EQ(names.removeDuplicates(), 0) << line << ": " << names.join(u' ').toStdString();
      EXPECT_TRUE(isSwitch || !names.contains(QAccessibleActionInterface::toggleAction())) << line;
    }
    for (int child = 0; child < item.childCount() && item.state().focusable; ++child) {
      QAccessibleInterface& part = *item.child(child);
      EXPECT_FALSE(isText(part) && item.text(QAccessible::Name).contains(part.text(QAccessible::Name)))
          << line << " holds " << part.text(QAccessible::Name).toStdString();
    }
  }

  static std::string roleName(QAccessible::Role role) {
    switch (role) {
    case QAccessible::PageTab:
      return "tab";
    case QAccessible::PushButton:
      return "button";
    case QAccessible::CheckBox:
      return "switch";
    case QAccessible::RadioButton:
      return "choice";
    case QAccessible::StaticText:
      return "text";
    case QAccessible::Heading:
      return "heading";
    case QAccessible::ListItem:
      return "row";
    case QAccessible::List:
      return "list";
    case QAccessible::Grouping:
      return "group";
    case QAccessible::EditableText:
      return "field";
    case QAccessible::Dialog:
      return "dialog";
    case QAccessible::ProgressBar:
      return "progress";
    default:
      return "other";
    }
  }
};

} // namespace vantle
