// SPDX-License-Identifier: MIT
#import "desktop/darwin/chooser/OpenPanel.h"

#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <AppKit/AppKit.h>
#include <QCoreApplication>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>
#include <chrono>
#include <memory>
#include <utility>

namespace vantle {

namespace {

struct Question {
  std::function<void(const std::string&)> picked; // empty when nobody wants to know any more
  Retained<NSOpenPanel> panel;                    // while it is open
};

NSOpenPanel* panelForApps() {
  NSOpenPanel* const panel = [NSOpenPanel openPanel];
  [panel setAllowedContentTypes:[NSArray arrayWithObject:UTTypeApplicationBundle]];
  [panel setDirectoryURL:[NSURL fileURLWithPath:@"/Applications"]];
  [panel setAllowsMultipleSelection:NO];
  [panel setPrompt:stringOf(QCoreApplication::translate("AppPicker", "Add").toStdString())];
  return panel;
}

// Whoever asked may be gone when the person answers.
void ask(const std::shared_ptr<Question>& question) {
  @autoreleasepool {
    question->panel = Retained<NSOpenPanel>(panelForApps());
    const bool isAnswered = [question->panel.get() runModal] == NSModalResponseOK;
    const Retained<NSOpenPanel> panel = std::exchange(question->panel, {});
    if (!isAnswered || !question->picked) return;
    if (const auto path = textOf([[panel.get() URL] path])) question->picked(*path);
  }
}

class Choice final : public Registration {
 public:
  Choice(EventLoop& loop, std::function<void(const std::string&)> picked)
      : m_question(std::make_shared<Question>()) {
    m_question->picked = std::move(picked);
    m_start = loop.after(std::chrono::milliseconds(0), [question = m_question] {
      ask(std::shared_ptr(question)); // which is kept past the end of this call's own timer
    });
  }
  ~Choice() override {
    m_question->picked = nullptr;
    [m_question->panel.get() cancel:nil];
  }
  Choice(const Choice&) = delete;
  Choice& operator=(const Choice&) = delete;

 private:
  std::shared_ptr<Question> m_question;
  std::unique_ptr<EventLoop::Handle> m_start;
};

} // namespace

std::unique_ptr<Registration> OpenPanel::choose(std::function<void(const std::string&)> picked) {
  return std::make_unique<Choice>(m_loop, std::move(picked));
}

} // namespace vantle
