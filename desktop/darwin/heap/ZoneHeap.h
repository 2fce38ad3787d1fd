// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/Heap.h"

namespace vantle {

class ZoneHeap final : public Heap {
 public:
  void trim() override;
};

} // namespace vantle
