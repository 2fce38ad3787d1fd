// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Keeps an observer registered; ends the registration when it is destroyed. May outlive what it was made by.
class Registration {
 public:
  virtual ~Registration() = default;
};

} // namespace vantle
