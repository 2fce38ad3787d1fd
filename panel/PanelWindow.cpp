// SPDX-License-Identifier: MIT
#include "panel/PanelWindow.h"

#include "panel/PanelPlacement.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QScreen>
#include <cmath>
#include <utility>

namespace vantle {
namespace {

constexpr int margin = 4; // to the edges of the screen
constexpr qreal cornerRadius = 14;

} // namespace

PanelWindow::PanelWindow(LookEngine& views, Engine& engine, PanelSurface& surface,
                         PanelModel::Actions actions)
    : PopUpWindow(surface), m_model(engine, std::move(actions)) {
  connect(this, &QQuickWindow::frameSwapped, this, [this] {
    if (std::exchange(m_awaitsFrame, false)) emit shown();
  });
  m_view = makeView(views, QStringLiteral("PanelView.qml"),
                    {{QStringLiteral("panel"), QVariant::fromValue(&m_model)},
                     {QStringLiteral("radius"), isTranslucent() ? cornerRadius : 0.0}});
  connect(m_view.get(), &QQuickItem::implicitHeightChanged, this, &PanelWindow::place);
  followScreens();
}

PanelWindow::~PanelWindow() {
  if (isVisible()) surface().hide(*this);
  m_view.reset(); // before the engine that made it
}

void PanelWindow::open(std::optional<QRect> anchor) {
  m_anchor = anchor;
  m_awaitsFrame = true;
  if (!isVisible()) forgetPlace();
  m_model.appear();
  place();
  surface().show(*this);
  if (!isVisible()) return leave();
  m_view->forceActiveFocus();
  update();
}

// The keyboard begins at the top, however short the panel was closed.
void PanelWindow::forgetPlace() {
  m_view->setProperty("isPlaced", false);
  if (QQuickItem* const last = m_view->scopedFocusItem()) last->setFocus(false);
}

void PanelWindow::dismiss() {
  if (!isVisible()) return;
  leave();
}

void PanelWindow::leave() {
  m_awaitsFrame = false;
  m_model.disappear();
  surface().hide(*this);
  emit dismissed();
}

bool PanelWindow::event(QEvent* event) {
  const bool handled = PopUpWindow::event(event);
  if (event->type() == QEvent::Close) m_model.disappear();
  return handled;
}

QScreen* PanelWindow::screenOfAnchor() const {
  QScreen* screen = m_anchor ? QGuiApplication::screenAt(m_anchor->center()) : nullptr;
  return screen != nullptr ? screen : screenOfTray();
}

QScreen* PanelWindow::screenOfTray() {
  const QList<QScreen*> screens = QGuiApplication::screens(); // the primary one is the first
  std::vector<std::pair<QRect, QRect>> areas;
  for (const QScreen* each : screens) areas.emplace_back(each->geometry(), each->availableGeometry());
  return screens.isEmpty() ? nullptr : screens[static_cast<qsizetype>(likelyScreen(areas))];
}

// The anchor, or where trays usually are; also when the anchor's screen is gone.
QRect PanelWindow::anchorOn(const QScreen& screen) const {
  if (m_anchor && screen.geometry().contains(m_anchor->center())) return *m_anchor;
  return likelyIcon(screen.geometry(), screen.availableGeometry());
}

void PanelWindow::place() {
  QScreen* screen = screenOfAnchor();
  if (screen == nullptr || !m_view) return; // between two screens; placed when the next one is there
  const QRect available = screen->availableGeometry();
  m_view->setProperty("maximumHeight", surface().roomOn(*screen).height() - 2 * margin);
  const QSize wanted(static_cast<int>(m_view->implicitWidth()),
                     static_cast<int>(std::ceil(m_view->implicitHeight())));
  const QRect anchor = anchorOn(*screen);
  const QRect target = panelPlace(anchor, wanted, screen->geometry(), available);
  surface().place(*this, *screen, anchor, target);
  m_view->setSize(target.size());
}

void PanelWindow::followScreens() {
  const auto placeIfOpen = [this] {
    if (isVisible()) place();
  };
  // Later: while Qt 6.8 says it, the screen is still there for whoever asks which one a point is on.
  connect(qApp, &QGuiApplication::screenRemoved, this, placeIfOpen, Qt::QueuedConnection);
  connect(qApp, &QGuiApplication::primaryScreenChanged, this, placeIfOpen);
  const auto follow = [this, placeIfOpen](QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, placeIfOpen);
    connect(screen, &QScreen::availableGeometryChanged, this, placeIfOpen);
  };
  for (QScreen* screen : QGuiApplication::screens()) follow(screen);
  connect(qApp, &QGuiApplication::screenAdded, this, follow);
}

} // namespace vantle
