// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vantle {

// Of a string with half of a pair of code units between two letters.
std::optional<std::string> textOfHalfPair();

// The domains of the user defaults, as another program would change them.

std::string ownDomain(); // that of this program
void clearDomain(const std::string& domain);
void putNumber(const std::string& domain, const std::string& key, double number);
// What Vantle stores nothing of: by the key's name a dictionary, bytes, an array that holds more than texts,
// or a date that no calendar has.
void putOdd(const std::string& domain, const std::string& key);
std::string oddIn(const std::string& domain, const std::string& key); // in words

} // namespace vantle
