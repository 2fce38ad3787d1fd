// SPDX-License-Identifier: MIT
#include "tests/unit/update/FeedServer.h"

#include <QSslConfiguration>
#include <stdexcept>

namespace vantle::testing_support {

FeedServer::FeedServer(const TestCertificate& certificate) {
  QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
  tls.setLocalCertificate(certificate.certificate);
  tls.setPrivateKey(certificate.key);
  m_server.setSslConfiguration(tls);
  if (!m_server.listen(QHostAddress::LocalHost)) throw std::runtime_error("no loopback port");
  QObject::connect(&m_server, &QTcpServer::pendingConnectionAvailable, &m_server, [this] {
    while (auto* socket = qobject_cast<QSslSocket*>(m_server.nextPendingConnection())) accept(*socket);
  });
}

// The sockets are the server's children; their last signals must not find this object half gone.
FeedServer::~FeedServer() {
  for (QSslSocket* socket : m_server.findChildren<QSslSocket*>()) socket->disconnect();
}

std::string FeedServer::address() const {
  return "https://localhost:" + std::to_string(m_server.serverPort()) + "/feed.json";
}

void FeedServer::answer(QSslSocket& socket, const std::string& body, const std::string& status,
                        const std::string& headers) {
  socket.write(("HTTP/1.1 " + status + "\r\nContent-Length: " + std::to_string(body.size()) +
                "\r\nConnection: close\r\n" + headers + "\r\n" + body)
                   .c_str());
  socket.disconnectFromHost();
}

void FeedServer::accept(QSslSocket& socket) {
  ++m_connections;
  auto head = std::make_shared<QByteArray>();
  const auto read = [this, &socket, head] {
    *head += socket.readAll();
    if (!head->contains("\r\n\r\n")) return;
    m_requests.push_back(head->toStdString());
    head->clear();
    behaviour(socket);
  };
  QObject::connect(&socket, &QSslSocket::readyRead, &socket, read);
  QObject::connect(&socket, &QSslSocket::disconnected, &socket, &QObject::deleteLater);
  if (socket.bytesAvailable() > 0) read();
}

} // namespace vantle::testing_support
