// SPDX-License-Identifier: MIT
// What the panel costs: own memory (RssAnon + VmSwap) never opened, open and closed again, the time until its
// first frame, and how often any thread wakes up while it is open and nothing changes.
//
//   panel            on the display it is started on
#include "engine/Engine.h"
#include "panel/PanelController.h"
#include "panel/TrayItem.h"
#include "platform/simulated/SampleDesktop.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using namespace vantle;

long valueOf(const QString& statusPath, const char* label) {
  QFile status(statusPath);
  if (!status.open(QIODevice::ReadOnly)) return 0;
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith(label))
      return line.mid(static_cast<int>(qstrlen(label))).trimmed().split(' ').first().toLong();
  }
  return 0;
}

double ownMegabytes() {
  const auto path = QStringLiteral("/proc/self/status");
  return static_cast<double>(valueOf(path, "RssAnon:") + valueOf(path, "VmSwap:")) / 1024;
}

long wakeUps() {
  long sum = 0;
  const QDir tasks(QStringLiteral("/proc/self/task"));
  for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    sum += valueOf(tasks.filePath(task + QStringLiteral("/status")), "voluntary_ctxt_switches:");
  }
  return sum;
}

// Waits in the loop as the program does, without a timer of its own between.
void rest(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

double openedAfter(PanelController& panel) {
  QEventLoop loop;
  QElapsedTimer time;
  double milliseconds = -1;
  const auto connection = QObject::connect(&panel, &PanelController::opened, [&] {
    milliseconds = static_cast<double>(time.nsecsElapsed()) / 1e6;
    loop.quit();
  });
  QTimer::singleShot(30'000, &loop, &QEventLoop::quit);
  time.start();
  panel.show(QRect(600, 4, 22, 22));
  loop.exec();
  QObject::disconnect(connection);
  return milliseconds;
}

} // namespace

int main(int argc, char** argv) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  const QGuiApplication application(argc, argv);
  SimulatedMachine machine;
  AppSettings settings(machine.defaults);
  Engine engine(machine.ports(), settings);
  const SampleDesktop sample = openSampleDesktop(machine);
  machine.activate(sample.game);
  PanelController panel(
      engine, settings, [] {}, [] {});
  const TrayItem tray(engine, panel);
  rest(2'000);
  std::printf("own memory, never opened   %6.1f MB\n", ownMegabytes());

  std::printf("first opening              %6.1f ms\n", openedAfter(panel));
  rest(2'000);
  std::printf("own memory, open           %6.1f MB\n", ownMegabytes());
  const long before = wakeUps();
  rest(20'000);
  // The end of the waiting is one.
  std::printf("wake-ups in 20 s open      %6ld\n", wakeUps() - before - 1);

  std::vector<double> again;
  for (int i = 0; i < 9; ++i) {
    panel.close();
    rest(200);
    again.push_back(openedAfter(panel));
  }
  std::sort(again.begin(), again.end());
  std::printf("opening again, median      %6.1f ms (best %.1f, worst %.1f)\n", again[again.size() / 2],
              again.front(), again.back());

  QEventLoop loop;
  QObject::connect(&panel, &PanelController::discarded, &loop, &QEventLoop::quit);
  QElapsedTimer time;
  time.start();
  panel.close();
  loop.exec();
  rest(500);
  std::printf("own memory, closed again   %6.1f MB, given back after %.0f s\n", ownMegabytes(),
              static_cast<double>(time.elapsed()) / 1000);
  std::printf("opening after that         %6.1f ms\n", openedAfter(panel));
  return 0;
}
