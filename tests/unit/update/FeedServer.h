// SPDX-License-Identifier: MIT
#pragma once

#include "tests/unit/update/TestCertificate.h"

#include <QSslServer>
#include <QSslSocket>
#include <functional>
#include <string>
#include <vector>

namespace vantle::testing_support {

// A real TLS server on the loopback address whose every answer a test writes byte by byte.
class FeedServer {
 public:
  using Behaviour = std::function<void(QSslSocket&)>;

  explicit FeedServer(const TestCertificate& certificate);
  ~FeedServer();
  FeedServer(const FeedServer&) = delete;
  FeedServer& operator=(const FeedServer&) = delete;

  std::string address() const; // https://localhost:PORT/feed.json
  const std::vector<std::string>& requests() const { return m_requests; }
  int connections() const { return m_connections; }

  Behaviour behaviour; // called once for every request whose head has arrived whole

  // Answers whole, and closes.
  static void answer(QSslSocket& socket, const std::string& body, const std::string& status = "200 OK",
                     const std::string& headers = "");

 private:
  void accept(QSslSocket& socket);

  QSslServer m_server;
  std::vector<std::string> m_requests;
  int m_connections = 0;
};

} // namespace vantle::testing_support
