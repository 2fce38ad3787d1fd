// SPDX-License-Identifier: MIT
#pragma once

#include <QSslCertificate>
#include <QSslKey>
#include <string>

namespace vantle::testing_support {

// A certificate that signs itself, made for one test run.
struct TestCertificate {
  std::string pem;
  QSslCertificate certificate;
  QSslKey key;
};

enum class Validity { current, expired };

TestCertificate makeCertificate(const std::string& hostName, Validity validity = Validity::current);

} // namespace vantle::testing_support
