// SPDX-License-Identifier: MIT
#include "command/Command.h"

#include "base/PlainText.h"
#include "command/StatusText.h"
#include "status/StatusJson.h"

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <utility>

namespace vantle {
namespace {

// What went wrong is in part told by others, of others.
void complain(const std::string& text) {
  constexpr std::size_t longest = 1000;
  std::fprintf(stderr, "vantle: %s\n", plainText(text, longest).c_str());
}

// Each line at once, for whoever reads it as it comes. A reader that has gone ends the program by its signal.
int print(const std::string& text) {
  const bool isTold = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
  if (isTold) return exitStatus::done;
  complain("the answer could not be written.");
  return exitStatus::failed;
}

int explain(const Failure& failure) {
  switch (failure.kind) {
  case Failure::Kind::notRunning:
    complain(failure.text.empty() ? "Vantle is not running." : failure.text);
    return exitStatus::notRunning;
  case Failure::Kind::silent:
    complain("the running Vantle does not answer.");
    return exitStatus::failed;
  case Failure::Kind::unheard:
    return exitStatus::failed; // there is nobody to tell it
  case Failure::Kind::refused:
    break;
  }
  complain(failure.text);
  return exitStatus::failed;
}

template <class T> int explainUnless(const Answer<T>& answer) {
  const auto* const failure = std::get_if<Failure>(&answer);
  return failure == nullptr ? exitStatus::done : explain(*failure);
}

std::string textOf(const Request& request, const Status& status) {
  return request.isJson ? statusJson(status).text() + "\n" : statusText(status);
}

// That nothing runs is an answer too, for whoever reads the output.
int explainStatus(const Request& request, const Failure& failure, const std::string& ownVersion) {
  if (request.isJson && failure.kind == Failure::Kind::notRunning) {
    print(statusJsonWithoutCopy(ownVersion).text() + "\n");
  }
  return explain(failure);
}

int runStatus(const Request& request, RunningCopy& copy, const std::string& ownVersion) {
  if (request.follows) {
    // Not all that changes is told in every form.
    std::string last;
    int printed = exitStatus::done;
    const Failure end = copy.follow([&](const Status& status) {
      std::string text = textOf(request, status);
      if (text == last) return true;
      last = std::move(text);
      printed = print(last);
      return printed == exitStatus::done;
    });
    return printed == exitStatus::done ? explainStatus(request, end, ownVersion) : printed;
  }
  const Answer<Status> answer = copy.status();
  if (const auto* const failure = std::get_if<Failure>(&answer)) {
    return explainStatus(request, *failure, ownVersion);
  }
  return print(textOf(request, std::get<Status>(answer)));
}

int runWhy(const Request& request, RunningCopy& copy) {
  const Answer<std::vector<AppStatus>> answer = copy.why(request.target);
  if (const auto* const failure = std::get_if<Failure>(&answer)) return explain(*failure);
  std::string text;
  for (const AppStatus& app : std::get<std::vector<AppStatus>>(answer)) text += whyText(app);
  return print(text);
}

int runPause(const Request& request, RunningCopy& copy) {
  const Done answer = copy.pause(request.duration);
  if (const auto* const failure = std::get_if<Failure>(&answer)) return explain(*failure);
  if (request.duration.count() == 0) return exitStatus::done;
  const auto end = static_cast<std::uint64_t>(std::time(nullptr) + request.duration.count());
  return print("No Boost starts by itself until " + clockText(end) + ".\n");
}

} // namespace

int runCommand(const Request& request, RunningCopy& copy, const std::string& ownVersion) {
  switch (request.kind) {
  case CommandKind::help:
    return print(helpText());
  case CommandKind::version:
    return print("vantle " + ownVersion + "\n");
  case CommandKind::status:
    return runStatus(request, copy, ownVersion);
  case CommandKind::why:
    return runWhy(request, copy);
  case CommandKind::boost:
    return explainUnless(copy.boost(request.target));
  case CommandKind::off:
    return explainUnless(copy.off());
  case CommandKind::pause:
    return runPause(request, copy);
  case CommandKind::report:
    break;
  }
  const Answer<std::string> answer = copy.report(request.withNames);
  const auto* const failure = std::get_if<Failure>(&answer);
  if (failure == nullptr) return print(std::get<std::string>(answer));
  print("Vantle " + ownVersion + "\n");
  return explain(*failure);
}

} // namespace vantle
