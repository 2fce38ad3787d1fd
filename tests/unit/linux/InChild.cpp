// SPDX-License-Identifier: MIT
#include "tests/unit/linux/InChild.h"

#include <exception>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::test {

std::string inChild(const std::function<std::string()>& check) {
  int ends[2];
  if (::pipe(ends) != 0) return "no pipe";
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    std::string answer;
    try {
      answer = check();
    } catch (const std::exception& error) {
      answer = error.what();
    }
    const bool isSent = ::write(ends[1], answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
    ::_exit(isSent ? 0 : 1);
  }
  ::close(ends[1]);
  std::string answer;
  char buffer[4096];
  ssize_t length = 0;
  while ((length = ::read(ends[0], buffer, sizeof buffer)) > 0)
    answer.append(buffer, static_cast<std::size_t>(length));
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) answer += "; the child died with status " + std::to_string(status);
  return answer;
}

bool becomeOrdinaryUser() {
  if (::geteuid() != 0) return true;
  return ::setgroups(0, nullptr) == 0 && ::setgid(ordinaryUser) == 0 && ::setuid(ordinaryUser) == 0;
}

std::string asOrdinaryUser(const std::function<std::string()>& check) {
  return inChild([&]() -> std::string { return becomeOrdinaryUser() ? check() : notPossibleHere; });
}

} // namespace vantle::test
