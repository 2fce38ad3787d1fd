// SPDX-License-Identifier: MIT
#import "desktop/darwin/tray/MenuBar.h"

#include "base/Names.h"
#import "desktop/darwin/Screens.h"
#import "platform/darwin/cocoa/Retained.h"
#import "platform/darwin/cocoa/Values.h"

#import <AppKit/AppKit.h>
#include <chrono>
#include <cstddef>
#include <utility>

namespace vantle {
class MenuBarItem;
}

// Hears the item's button and its menu.
@interface VantleMenuBarTarget : NSObject <NSMenuDelegate> {
 @public
  vantle::MenuBarItem* owner; // null when the item is gone
}
- (void)press:(id)sender;
- (void)choose:(id)sender;
@end

namespace vantle {

namespace {

NSString* stringFor(const QString& text) { return stringOf(text.toStdString()); }

} // namespace

class MenuBarItem final : public TrayIcon {
 public:
  MenuBarItem(EventLoop& loop, TrayActions actions)
      : m_loop(loop), m_actions(std::move(actions)),
        m_target(Retained<VantleMenuBarTarget>::taking([[VantleMenuBarTarget alloc] init])),
        m_menu(Retained<NSMenu>::taking([[NSMenu alloc] init])) {
    @autoreleasepool {
      m_target.get()->owner = this;
      [m_menu.get() setAutoenablesItems:NO];
      [m_menu.get() setDelegate:m_target.get()];
      m_item = Retained<NSStatusItem>(
          [[NSStatusBar systemStatusBar] statusItemWithLength:NSSquareStatusItemLength]);
      [button() setTarget:m_target.get()];
      [button() setAction:@selector(press:)];
      [button() sendActionOn:NSEventMaskLeftMouseUp | NSEventMaskRightMouseUp | NSEventMaskOtherMouseUp];
    }
  }
  ~MenuBarItem() override {
    @autoreleasepool {
      m_target.get()->owner = nullptr;
      [button() setTarget:nil];
      [m_menu.get() setDelegate:nil];
      [[NSStatusBar systemStatusBar] removeStatusItem:m_item.get()];
    }
  }
  MenuBarItem(const MenuBarItem&) = delete;
  MenuBarItem& operator=(const MenuBarItem&) = delete;

  // The system colours its own symbols for whatever the bar lies over.
  void show(const TrayFace& face) override {
    @autoreleasepool {
      NSImage* const image = [NSImage imageWithSystemSymbolName:stringFor(face.symbol)
                                       accessibilityDescription:stringFor(face.state)];
      [image setTemplate:YES];
      [button() setImage:image];
      [button() setTitle:image == nil ? stringOf(names::display) : @""];
      [button() setToolTip:stringFor(face.state)];
    }
  }

  // Lines stay what they are, since the menu may be open.
  void offer(std::vector<TrayEntry> menu) override {
    @autoreleasepool {
      if (menu.size() != m_entries.size()) layOut(menu);
      m_entries = std::move(menu);
      for (std::size_t at = 0; at < m_entries.size(); ++at) {
        const TrayEntry& entry = m_entries[at];
        NSMenuItem* const line = [m_menu.get() itemAtIndex:static_cast<NSInteger>(at)];
        [line setHidden:!entry.isShown];
        if ([line isSeparatorItem]) continue;
        [line setTitle:stringFor(entry.label)];
        [line setEnabled:static_cast<bool>(entry.chosen)];
        [line setState:entry.isChecked.value_or(false) ? NSControlStateValueOn : NSControlStateValueOff];
      }
    }
  }

  void press(NSEvent* event) {
    switch ([event type]) {
    case NSEventTypeOtherMouseUp:
      return soon(m_actions.middleClicked);
    case NSEventTypeRightMouseUp:
      return soon([this] { openMenu(); });
    default: // also by an assistive program, without an event
      if (([event modifierFlags] & NSEventModifierFlagControl) != 0) return soon([this] { openMenu(); });
      soon([this] { m_actions.clicked(place()); });
    }
  }

  void choose(std::size_t line) {
    soon([this, line] {
      if (line >= m_entries.size()) return;
      const TrayEntry entry = m_entries[line]; // a copy: what it does may change the menu
      if (!entry.isShown || !entry.chosen) return;
      const std::optional<QRect> icon = place(); // which is surer than the pointer
      entry.chosen(icon ? std::optional(icon->center()) : std::nullopt);
    });
  }

  // With a menu of its own the button would open that at every click.
  void menuHasClosed() { [m_item.get() setMenu:nil]; }

 private:
  NSStatusBarButton* button() const { return [m_item.get() button]; }

  void layOut(const std::vector<TrayEntry>& menu) {
    [m_menu.get() removeAllItems];
    for (std::size_t at = 0; at < menu.size(); ++at) {
      NSMenuItem* const line = menu[at].label.isEmpty()
                                   ? [NSMenuItem separatorItem]
                                   : [[[NSMenuItem alloc] initWithTitle:@""
                                                                 action:@selector(choose:)
                                                          keyEquivalent:@""] autorelease];
      [line setTarget:m_target.get()];
      [line setTag:static_cast<NSInteger>(at)];
      [m_menu.get() addItem:line];
    }
  }

  // The system waits for the button and for the menu, so the work comes after them.
  void soon(std::function<void()> work) {
    m_work = std::move(work);
    m_later = m_loop.after(std::chrono::milliseconds(0), [this] {
      const std::function<void()> due = std::exchange(m_work, nullptr);
      if (due) due();
    });
  }

  void openMenu() {
    @autoreleasepool {
      [m_item.get() setMenu:m_menu.get()];
      [button() performClick:nil];
    }
  }

  std::optional<QRect> place() const {
    @autoreleasepool {
      NSWindow* const window = [button() window];
      if (window == nil) return std::nullopt;
      return placeOnScreens([window convertRectToScreen:[button() convertRect:[button() bounds] toView:nil]]);
    }
  }

  EventLoop& m_loop;
  TrayActions m_actions;
  Retained<VantleMenuBarTarget> m_target;
  Retained<NSMenu> m_menu;
  Retained<NSStatusItem> m_item;
  std::vector<TrayEntry> m_entries;
  std::function<void()> m_work; // what was asked for last
  std::unique_ptr<EventLoop::Handle> m_later;
};

std::unique_ptr<TrayIcon> MenuBar::add(TrayActions actions) {
  return std::make_unique<MenuBarItem>(m_loop, std::move(actions));
}

} // namespace vantle

@implementation VantleMenuBarTarget
- (void)press:(id)sender {
  (void)sender;
  if (owner != nullptr) owner->press([[NSApplication sharedApplication] currentEvent]);
}
- (void)choose:(id)sender {
  if (owner != nullptr) owner->choose(static_cast<std::size_t>([static_cast<NSMenuItem*>(sender) tag]));
}
- (void)menuDidClose:(NSMenu*)menu {
  (void)menu;
  if (owner != nullptr) owner->menuHasClosed();
}
@end
