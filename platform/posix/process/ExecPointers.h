// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vantle {

// Arguments or an environment as exec wants them, with a null at the end. Into the texts, which stay where
// they are.
inline std::vector<char*> execPointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

} // namespace vantle
