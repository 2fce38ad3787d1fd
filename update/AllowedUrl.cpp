// SPDX-License-Identifier: MIT
#include "update/AllowedUrl.h"

#include <QString>
#include <QUrl>
#include <algorithm>

namespace vantle {

namespace {

QString fromUtf8(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// A browser gets the address as it is written, and may decode a host differently from us. Written in plain
// characters it has one reading only.
bool isPlain(std::string_view authority) {
  return std::all_of(authority.begin(), authority.end(),
                     [](char c) { return c > 0x20 && c < 0x7f && c != '%' && c != '\\'; });
}

} // namespace

bool isAllowedUrl(std::string_view address, std::string_view vendorHost) {
  // QUrl would lower the case of the scheme: it is compared as written.
  constexpr std::string_view start = "https://";
  if (vendorHost.empty() || !address.starts_with(start)) return false;
  const std::string_view rest = address.substr(start.size());
  if (!isPlain(rest.substr(0, rest.find_first_of("/?#")))) return false;
  const QUrl url(fromUtf8(address), QUrl::StrictMode);
  return url.isValid() && url.host().toLower() == fromUtf8(vendorHost);
}

} // namespace vantle
