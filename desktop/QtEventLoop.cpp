// SPDX-License-Identifier: MIT
#include "desktop/QtEventLoop.h"

#include <QSocketNotifier>
#include <QTimer>
#include <utility>

namespace vantle {

namespace {

// Deleted later, because a callback may end the very watch or timer that is calling it.
template <class Object> class ObjectHandle final : public EventLoop::Handle {
 public:
  explicit ObjectHandle(Object* object) : m_object(object) {}
  ~ObjectHandle() override {
    m_object->disconnect();
    stop(*m_object);
    m_object->deleteLater();
  }
  ObjectHandle(const ObjectHandle&) = delete;
  ObjectHandle& operator=(const ObjectHandle&) = delete;

 private:
  static void stop(QSocketNotifier& notifier) { notifier.setEnabled(false); }
  static void stop(QTimer& timer) { timer.stop(); }

  Object* m_object;
};

QSocketNotifier::Type typeOf(EventLoop::Readiness readiness) {
  switch (readiness) {
  case EventLoop::Readiness::writable:
    return QSocketNotifier::Write;
  case EventLoop::Readiness::priority:
    return QSocketNotifier::Exception;
  case EventLoop::Readiness::readable:
    break;
  }
  return QSocketNotifier::Read;
}

} // namespace

std::unique_ptr<EventLoop::Handle> QtEventLoop::watch(int descriptor, Readiness readiness,
                                                      std::function<void()> ready) {
  auto* notifier = new QSocketNotifier(descriptor, typeOf(readiness));
  QObject::connect(notifier, &QSocketNotifier::activated, notifier, std::move(ready));
  return std::make_unique<ObjectHandle<QSocketNotifier>>(notifier);
}

std::unique_ptr<EventLoop::Handle> QtEventLoop::after(std::chrono::milliseconds delay,
                                                      std::function<void()> due) {
  auto* timer = new QTimer;
  timer->setSingleShot(true);
  timer->setTimerType(Qt::CoarseTimer);
  QObject::connect(timer, &QTimer::timeout, timer, std::move(due));
  timer->start(delay);
  return std::make_unique<ObjectHandle<QTimer>>(timer);
}

} // namespace vantle
