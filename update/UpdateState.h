// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <variant>

// What is known about a newer version. The cases with a payload are equal when their payloads are.
namespace vantle::update {

struct Available {
  std::string version; // without the decoration that the feed may give it, such as a leading v
  std::string page;    // address of its download page
  bool operator==(const Available&) const = default;
};
struct Failed {
  std::string message; // for the person to read
  bool operator==(const Failed&) const = default;
};
struct Idle { // no check yet in this run
  bool operator==(const Idle&) const = default;
};
struct Checking { // a request is under way
  bool operator==(const Checking&) const = default;
};
struct UpToDate { // the feed's version is not newer than this build
  bool operator==(const UpToDate&) const = default;
};
struct NotConfigured { // this build has no usable feed address
  bool operator==(const NotConfigured&) const = default;
};

using State = std::variant<Available, Failed, Idle, Checking, UpToDate, NotConfigured>;

} // namespace vantle::update
