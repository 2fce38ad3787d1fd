// SPDX-License-Identifier: MIT
#pragma once

#include "platform/OwnedMachine.h"

#include <memory>

namespace vantle {

// Where the ports meet macOS: the only place that knows which part stands for which port.
class DarwinMachine final : public OwnedMachine {
 public:
  static std::unique_ptr<DarwinMachine> forSelfTest();

  ~DarwinMachine() override;
  DarwinMachine(const DarwinMachine&) = delete;
  DarwinMachine& operator=(const DarwinMachine&) = delete;

  Machine machine() override;
  std::string desktop() const override { return {}; } // it looks for no apps
  std::vector<std::pair<std::string, std::string>> facts() const override;

 private:
  struct Parts;
  explicit DarwinMachine(std::unique_ptr<Parts> parts);

  std::unique_ptr<Parts> m_parts;
};

} // namespace vantle
