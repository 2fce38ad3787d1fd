// SPDX-License-Identifier: MIT
#include "panel/IconMenuWindow.h"

#include "panel/PanelPlacement.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>
#include <cmath>
#include <utility>

namespace vantle {
namespace {

constexpr qreal cornerRadius = 8;

// The lines that are shown, each with its place among all.
QVariantList linesOf(const std::vector<TrayEntry>& entries) {
  QVariantList lines;
  for (std::size_t at = 0; at < entries.size(); ++at) {
    const TrayEntry& entry = entries[at];
    if (!entry.isShown) continue;
    lines.append(QVariantMap{{QStringLiteral("place"), static_cast<int>(at)},
                             {QStringLiteral("text"), entry.label},
                             {QStringLiteral("canBeChosen"), static_cast<bool>(entry.chosen)},
                             {QStringLiteral("isSwitch"), entry.isChecked.has_value()},
                             {QStringLiteral("isChecked"), entry.isChecked.value_or(false)}});
  }
  return lines;
}

} // namespace

IconMenuWindow::IconMenuWindow(LookEngine& views, PanelSurface& surface) : PopUpWindow(surface) {
  m_view = makeView(views, QStringLiteral("IconMenuView.qml"),
                    {{QStringLiteral("radius"), isTranslucent() ? cornerRadius : 0.0}});
  connect(m_view.get(), SIGNAL(chosen(int)), this, SLOT(choose(int)));
  connect(m_view.get(), &QQuickItem::implicitWidthChanged, this, &IconMenuWindow::place);
  connect(m_view.get(), &QQuickItem::implicitHeightChanged, this, &IconMenuWindow::place);
}

IconMenuWindow::~IconMenuWindow() {
  if (isVisible()) surface().hide(*this);
  m_view.reset(); // before the engine that made it
}

void IconMenuWindow::open(const QRect& icon, std::vector<TrayEntry> entries) {
  m_icon = icon;
  m_entries = std::move(entries);
  m_view->setProperty("lines", linesOf(m_entries));
  QMetaObject::invokeMethod(m_view.get(), "settle");
  place();
  surface().show(*this);
  if (!isVisible()) return dismiss();
  QMetaObject::invokeMethod(m_view.get(), "enter");
  update();
}

void IconMenuWindow::dismiss() {
  surface().hide(*this);
  emit dismissed();
}

void IconMenuWindow::choose(int index) {
  const TrayEntry entry = m_entries[static_cast<std::size_t>(index)];
  dismiss();
  if (entry.chosen) entry.chosen(m_icon.center());
}

void IconMenuWindow::place() {
  QScreen* screen = QGuiApplication::screenAt(m_icon.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return; // between two screens
  const QSize wanted(static_cast<int>(std::ceil(m_view->implicitWidth())),
                     static_cast<int>(std::ceil(m_view->implicitHeight())));
  const QRect target = panelPlace(m_icon, wanted, screen->geometry(), screen->availableGeometry());
  surface().place(*this, *screen, m_icon, target);
  m_view->setSize(target.size());
}

} // namespace vantle
