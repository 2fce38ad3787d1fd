// SPDX-License-Identifier: MIT
#include "tests/support/InChild.h"

#include "tests/support/ForkedProcess.h"
#include "tests/support/User.h"

#include <exception>
#include <fcntl.h>
#include <unistd.h>

namespace vantle::test {

std::string inChild(const std::function<std::string()>& check) {
  int ends[2];
  if (::pipe(ends) != 0) return "no pipe";
  ForkedProcess child({}, [&] {
    std::string answer;
    try {
      answer = check();
    } catch (const std::exception& error) {
      answer = error.what();
    }
    if (::write(ends[1], answer.data(), answer.size()) != static_cast<ssize_t>(answer.size())) ::_exit(1);
  });
  const int status = child.waitForEnd();
  ::close(ends[1]);
  // What the check has left running may hold the other end for long.
  ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
  std::string answer;
  char buffer[4096];
  ssize_t length = 0;
  while ((length = ::read(ends[0], buffer, sizeof buffer)) > 0)
    answer.append(buffer, static_cast<std::size_t>(length));
  ::close(ends[0]);
  if (status != 0) answer += "; the child died with status " + std::to_string(status);
  return answer;
}

std::string asOrdinaryUser(const std::function<std::string()>& check) {
  if (!runsAsRoot()) return inChild(check);
  return inChild([&]() -> std::string { return becomeUser(ordinaryUser) ? check() : notPossibleHere; });
}

} // namespace vantle::test
