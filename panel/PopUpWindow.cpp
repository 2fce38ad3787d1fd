// SPDX-License-Identifier: MIT
#include "panel/PopUpWindow.h"

#include "base/Invariant.h"
#include "base/Names.h"
#include "panel/Resources.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQuickItem>

namespace vantle {

PopUpWindow::PopUpWindow(PanelSurface& surface)
    : m_surface(surface), m_isTranslucent(surface.isTranslucent()) {
  setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
  setTitle(QString::fromLatin1(names::display));
  if (m_isTranslucent) {
    QSurfaceFormat translucent = format();
    translucent.setAlphaBufferSize(8);
    setFormat(translucent);
  }
  setColor(m_isTranslucent ? Qt::transparent : Qt::black);
}

std::unique_ptr<QQuickItem> PopUpWindow::makeView(LookEngine& views, const QString& file,
                                                  const QVariantMap& properties) {
  registerPanelTypes();
  QQmlComponent component(&views, QUrl(QStringLiteral("qrc:/qt/qml/Vantle/Panel/") + file));
  QObject* root = component.createWithInitialProperties(properties);
  if (root == nullptr) qCritical("%s", qPrintable(component.errorString()));
  std::unique_ptr<QQuickItem> view(qobject_cast<QQuickItem*>(root));
  invariant(view != nullptr, "the views are part of the program");
  view->setParentItem(contentItem());
  return view;
}

bool PopUpWindow::event(QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress) {
    const QPointF place = static_cast<QMouseEvent*>(event)->position();
    if (!QRectF(0, 0, width(), height()).contains(place)) {
      dismiss();
      return true;
    }
  }
  const bool handled = QQuickWindow::event(event);
  if (event->type() == QEvent::FocusOut) dismiss();
  return handled;
}

// What the view has open over itself is left first.
void PopUpWindow::keyPressEvent(QKeyEvent* event) {
  QQuickWindow::keyPressEvent(event);
  if (!event->isAccepted() && event->key() == Qt::Key_Escape) dismiss();
}

} // namespace vantle
