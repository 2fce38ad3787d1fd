// SPDX-License-Identifier: MIT
#include <QGuiApplication>
#include <gtest/gtest.h>

// The toolkit and what it stands on keep much for ever; the tests count the objects that are theirs.
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() { return 1; }

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
