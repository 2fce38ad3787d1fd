// SPDX-License-Identifier: MIT
#include "desktop/linux/bus/ProgramObject.h"

#include "base/Names.h"

namespace vantle {

ProgramObject::ProgramObject(SessionBus& bus) : GuardedObject(bus, QString::fromLatin1(names::busPath)) {
  connect(&bus, &SessionBus::opened, this, &ProgramObject::takeName);
}

void ProgramObject::add(BusInterface& part, Name name) {
  GuardedObject::add(part);
  m_wantsName = m_wantsName || name == Name::now;
  if (bus().isConnected()) takeName();
}

void ProgramObject::takeName() {
  if (m_wantsName && enterBus()) bus().connection().registerService(QString::fromLatin1(names::identifier));
}

} // namespace vantle
