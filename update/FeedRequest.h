// SPDX-License-Identifier: MIT
#pragma once

#include "update/Answer.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QTimer>
#include <chrono>
#include <functional>
#include <string>

class QNetworkReply;

namespace vantle {

struct FeedLimits {
  // Given up when nothing arrives for this long.
  std::chrono::milliseconds silence = std::chrono::seconds(10);
  // And when the answer is not complete after this long: a server that drips must not keep a check open.
  std::chrono::milliseconds whole = std::chrono::seconds(60);
  // A feed is a few hundred bytes; more than this is no feed.
  qsizetype bodyBytes = qsizetype{1024} * 1024;
};

// Asks for the feed: a plain GET over TLS that follows nothing, keeps nothing and tells nothing about the
// person: no cookies, no credentials, no cache. One request at a time.
class FeedRequest {
 public:
  using Done = std::function<void(Answer)>;

  // `authorities` are the certificates to trust, as PEM; the system's when empty.
  FeedRequest(FeedLimits limits, const std::string& authorities);
  ~FeedRequest();
  FeedRequest(const FeedRequest&) = delete;
  FeedRequest& operator=(const FeedRequest&) = delete;

  // Calls back once, on the main loop, never inside this call; not at all when the object is gone by then.
  void start(const std::string& address, Done done);

 private:
  void takeArrived();
  void finish();

  FeedLimits m_limits;
  QByteArray m_authorities;
  QNetworkAccessManager m_manager;
  QNetworkReply* m_reply = nullptr;
  QByteArray m_body;
  bool m_tooLarge = false;
  QTimer m_whole;
  Done m_done;
};

} // namespace vantle
