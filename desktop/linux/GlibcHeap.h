// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/Heap.h"

namespace vantle {

class GlibcHeap final : public Heap {
 public:
  void trim() override;
};

} // namespace vantle
