// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/bus/Followers.h"
#include "desktop/linux/bus/ProgramObject.h"
#include "remote/ports/RemoteDoor.h"
#include "status/Changes.h"

#include <QObject>
#include <QVariantMap>
#include <memory>

namespace vantle {

// com.halvo.vantle.Boost1, as docs/scripting.md describes it. Whoever asks for a property is told of changes
// from then on, each by a message of its own, until it leaves the bus: others who listen hear nothing.
class BoostInterface : public QObject, public BusInterface, public RemoteDoor::Open {
  Q_OBJECT

 public:
  BoostInterface(ProgramObject& object, RemoteDoor::Answers answers);
  ~BoostInterface() override;
  BoostInterface(const BoostInterface&) = delete;
  BoostInterface& operator=(const BoostInterface&) = delete;

  void tell() override;

  QString name() const override;
  QString introspection() const override;
  bool take(const QDBusMessage& call) override;
  void takeProperties(const QDBusMessage& question) override;

 private:
  bool follow(const QDBusMessage& call, const Status& now);
  void answerMethod(const QDBusMessage& call);
  void answerOrder(const QDBusMessage& call, const RemoteDoor::Refusal& refusal);

  ProgramObject& m_object;
  RemoteDoor::Answers m_answers;
  Followers m_followers;
  Status m_told; // what they know
};

class BusDoor final : public RemoteDoor {
 public:
  explicit BusDoor(ProgramObject& object) : m_object(object) {} // which outlives every door

  std::unique_ptr<Open> open(Answers answers) override;

 private:
  ProgramObject& m_object;
};

} // namespace vantle
