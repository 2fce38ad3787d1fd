// SPDX-License-Identifier: MIT
#include "desktop/linux/activation/HandedToken.h"

#include <QGuiApplication>
#include <utility>

namespace vantle {

namespace {

constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN"; // where the toolkit looks for it
constexpr qsizetype longestToken =
    1024; // bytes. A message to the compositor may have 4096; desktops use under 100

} // namespace

void HandedToken::give(const QString& token) { m_token = token.size() <= longestToken ? token : QString(); }

void HandedToken::during(const std::function<void()>& action) {
  const QByteArray token = std::exchange(m_token, {}).toUtf8();
  const bool isUsed = !token.isEmpty() && token.size() <= longestToken &&
                      QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
  if (isUsed) qputenv(tokenVariable, token);
  action();
  if (isUsed) qunsetenv(tokenVariable);
}

} // namespace vantle
