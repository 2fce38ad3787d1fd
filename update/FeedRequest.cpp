// SPDX-License-Identifier: MIT
#include "update/FeedRequest.h"

#include "base/Invariant.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QUrl>
#include <utility>

namespace vantle {

namespace {

QNetworkRequest plainRequest(const std::string& address, const FeedLimits& limits) {
  QNetworkRequest request(QUrl(QString::fromStdString(address), QUrl::StrictMode));
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  request.setRawHeader("Accept-Language", "*"); // or the toolkit tells the person's
  request.setTransferTimeout(static_cast<int>(limits.silence.count()));
  return request;
}

// An error that Qt derives from the status is an answer, not a failure of the transport.
bool reached(QNetworkReply::NetworkError error) {
  return error == QNetworkReply::NoError || error >= QNetworkReply::ContentAccessDenied;
}

} // namespace

FeedRequest::FeedRequest(FeedLimits limits, const std::string& authorities)
    : m_limits(limits), m_authorities(QByteArray::fromStdString(authorities)) {
  m_whole.setSingleShot(true);
  QObject::connect(&m_whole, &QTimer::timeout, &m_whole, [this] { m_reply->abort(); });
}

FeedRequest::~FeedRequest() {
  m_done = nullptr;
  if (m_reply != nullptr) m_reply->disconnect();
}

void FeedRequest::start(const std::string& address, Done done) {
  invariant(m_reply == nullptr, "one request for the feed at a time");
  m_done = std::move(done);
  m_body.clear();
  m_tooLarge = false;
  QNetworkRequest request = plainRequest(address, m_limits);
  if (!m_authorities.isEmpty()) {
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setCaCertificates(QSslCertificate::fromData(m_authorities));
    request.setSslConfiguration(tls);
  }
  m_reply = m_manager.get(request);
  QObject::connect(m_reply, &QNetworkReply::readyRead, &m_whole, [this] { takeArrived(); });
  QObject::connect(
      m_reply, &QNetworkReply::finished, &m_whole, [this] { finish(); }, Qt::QueuedConnection);
  m_whole.start(m_limits.whole);
}

void FeedRequest::takeArrived() {
  if (m_tooLarge) return;
  m_body += m_reply->read(m_limits.bodyBytes + 1 - m_body.size());
  if (m_body.size() <= m_limits.bodyBytes) return;
  m_tooLarge = true;
  m_reply->abort();
}

void FeedRequest::finish() {
  m_whole.stop();
  if (!m_tooLarge && m_reply->isOpen()) takeArrived();
  Answer answer;
  const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
  if (status.isValid()) answer.status = status.toInt();
  answer.transportFailed = !m_tooLarge && !reached(m_reply->error());
  // A body cut off at the limit is no document, whatever it holds.
  if (!m_tooLarge) answer.body = m_body.toStdString();
  m_body.clear();
  std::exchange(m_reply, nullptr)->deleteLater();
  std::exchange(m_done, nullptr)(std::move(answer));
}

} // namespace vantle
