// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/activation/ProgramObject.h"
#include "desktop/linux/remote/Callers.h"
#include "remote/ports/RemoteDoor.h"
#include "status/Changes.h"

#include <QDBusServiceWatcher>
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
  void letIn(const QDBusMessage& call, std::function<void()> answer);
  bool follow(const QDBusMessage& call, const Status& now);
  void answerProperties(const QDBusMessage& question);
  void answerMethod(const QDBusMessage& call);
  void answerOrder(const QDBusMessage& call, const RemoteDoor::Refusal& refusal);
  void forgetFollowers();

  ProgramObject& m_object;
  RemoteDoor::Answers m_answers;
  Callers m_callers;
  QDBusServiceWatcher m_followers; // whom it watches for is told
  Status m_told;                   // what they know
};

class BusDoor final : public RemoteDoor {
 public:
  explicit BusDoor(ProgramObject& object) : m_object(object) {} // which outlives every door

  std::unique_ptr<Open> open(Answers answers) override;

 private:
  ProgramObject& m_object;
};

} // namespace vantle
