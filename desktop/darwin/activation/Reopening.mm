// SPDX-License-Identifier: MIT
#import "desktop/darwin/activation/Reopening.h"

#import "platform/darwin/cocoa/Retained.h"

#import <AppKit/AppKit.h>
#include <QElapsedTimer>
#include <chrono>
#include <utility>

namespace vantle {
class ReopenEvents;
}

@interface VantleReopenTarget : NSObject {
 @public
  vantle::ReopenEvents* owner;
}
- (void)handle:(NSAppleEventDescriptor*)event withReply:(NSAppleEventDescriptor*)reply;
@end

namespace vantle {

namespace {

// The core events of every program, and "it was opened again": 'aevt' and 'rapp'.
constexpr AEEventClass coreEvents = 0x61657674;
constexpr AEEventID openedAgain = 0x72617070;

// Somebody who asks over and over must not take the front from all other apps for good.
constexpr std::chrono::milliseconds shortestPause{500};

} // namespace

class ReopenEvents final : public Registration {
 public:
  ReopenEvents(EventLoop& loop, std::function<void()> show)
      : m_loop(loop), m_show(std::move(show)),
        m_target(Retained<VantleReopenTarget>::taking([[VantleReopenTarget alloc] init])) {
    m_target.get()->owner = this;
    // Later: while the program starts the system puts an answer of its own into this place.
    m_later = m_loop.after(std::chrono::milliseconds(0), [this] { listen(); });
  }
  ~ReopenEvents() override {
    m_target.get()->owner = nullptr;
    if (!m_isListening) return;
    @autoreleasepool {
      [[NSAppleEventManager sharedAppleEventManager] removeEventHandlerForEventClass:coreEvents
                                                                          andEventID:openedAgain];
    }
  }
  ReopenEvents(const ReopenEvents&) = delete;
  ReopenEvents& operator=(const ReopenEvents&) = delete;

  // The system waits for the answer, so the work comes after it.
  void showSoon() {
    if (m_soon) return;
    const bool isAgain = m_sinceShown.isValid() && !m_sinceShown.hasExpired(shortestPause.count());
    m_soon = m_loop.after(isAgain ? shortestPause : std::chrono::milliseconds(0), [this] {
      m_soon.reset();
      m_sinceShown.start();
      m_show();
    });
  }

 private:
  void listen() {
    @autoreleasepool {
      [[NSAppleEventManager sharedAppleEventManager] setEventHandler:m_target.get()
                                                         andSelector:@selector(handle:withReply:)
                                                       forEventClass:coreEvents
                                                          andEventID:openedAgain];
    }
    m_isListening = true;
  }

  EventLoop& m_loop;
  std::function<void()> m_show;
  Retained<VantleReopenTarget> m_target;
  bool m_isListening = false;
  QElapsedTimer m_sinceShown;
  std::unique_ptr<EventLoop::Handle> m_later;
  std::unique_ptr<EventLoop::Handle> m_soon;
};

std::unique_ptr<Registration> Reopening::answer(Actions actions) {
  return std::make_unique<ReopenEvents>(m_loop, std::move(actions.show));
}

} // namespace vantle

@implementation VantleReopenTarget
- (void)handle:(NSAppleEventDescriptor*)event withReply:(NSAppleEventDescriptor*)reply {
  (void)event, (void)reply;
  if (owner != nullptr) owner->showSoon();
}
@end
