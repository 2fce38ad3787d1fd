// SPDX-License-Identifier: MIT
#include "look/LookEngine.h"

#include "look/ProgramIcon.h"
#include "look/Resources.h"
#include "look/TypeRegistrations.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPixmapCache>
#include <QQuickWindow>

namespace vantle {
namespace {
// Themed icons on their way into views; the toolkit's 10 MB is waste.
constexpr int pixmapCacheKilobytes = 512;
int livingEngines = 0;

// Glyphs, shaping plans and the list of all fonts, up to a megabyte. The toolkit lets go of them by itself
// only beyond 4 MB; but also when the fonts that the program has brought along are taken away, be they none
// at all.
void forgetFonts() {
  QFontDatabase::addApplicationFontFromData(QByteArrayLiteral("none"));
  QFontDatabase::removeAllApplicationFonts();
}
} // namespace

LookEngine::LookEngine(AppSettings& settings, IconTheme& icons, const PlaceWords& words)
    : m_settings(settings), m_icons(icons), m_words(words) {
  ++livingEngines;
  registerLookTypes();
  addImportPath(QStringLiteral("qrc:/qt/qml"));
  QPixmapCache::setCacheLimit(pixmapCacheKilobytes);
  icons.choose();
  if (livingEngines == 1) QGuiApplication::setWindowIcon(programIcon());
}

LookEngine::~LookEngine() {
  if (--livingEngines > 0) return;
  QGuiApplication::setWindowIcon({}); // no window, no pictures
  forgetTypes();
  trimComponentCache(); // frees the property tables that only the types held
}

void prepareRendering() {
  if (QQuickWindow::sceneGraphBackend() == QLatin1String("software")) return;
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void giveMemoryBack(Heap& heap) {
  QPixmapCache::clear();
  if (livingEngines == 0) forgetFonts();
  heap.trim();
}

} // namespace vantle
