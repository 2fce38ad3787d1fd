// SPDX-License-Identifier: MIT
#include "tests/support/FakeService.h"

#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace vantle::desktop {

FakeService::FakeService(const std::string& address, const std::string& name)
    : m_name(name), m_wake(::eventfd(0, EFD_CLOEXEC)) {
  const bool isThere = sd_bus_new(&m_bus) >= 0 && sd_bus_set_address(m_bus, address.c_str()) >= 0 &&
                       sd_bus_set_bus_client(m_bus, 1) >= 0 && sd_bus_start(m_bus) >= 0 &&
                       sd_bus_add_filter(m_bus, nullptr, take, this) >= 0 &&
                       sd_bus_request_name(m_bus, name.c_str(), 0) >= 0;
  if (!isThere) throw std::runtime_error("no place on the bus for " + name);
  m_thread = std::thread([this] { serve(); });
}

FakeService::~FakeService() {
  {
    const std::lock_guard lock(m_mutex);
    m_isOver = true;
  }
  wake();
  m_thread.join();
  sd_bus_release_name(m_bus, m_name.c_str()); // a successor may come at once
  sd_bus_flush_close_unref(m_bus);
  ::close(m_wake);
}

void FakeService::answer(const std::string& path, const std::string& member, Answer answer) {
  const std::lock_guard lock(m_mutex);
  m_answers.insert_or_assign({path, member}, std::move(answer));
}

void FakeService::ignore(const std::string& member) {
  const std::lock_guard lock(m_mutex);
  m_ignored.insert(member);
}

int FakeService::calls(const std::string& member) const {
  const std::lock_guard lock(m_mutex);
  const auto found = m_calls.find(member);
  return found == m_calls.end() ? 0 : found->second;
}

void FakeService::serve() {
  while (true) {
    int status = 1;
    while (status > 0) status = sd_bus_process(m_bus, nullptr);
    if (status < 0) return;
    pollfd sources[] = {{sd_bus_get_fd(m_bus), static_cast<short>(sd_bus_get_events(m_bus)), 0},
                        {m_wake, POLLIN, 0}};
    ::poll(sources, 2, -1);
    if (sources[1].revents != 0 && !takeDeeds()) return;
  }
}

void FakeService::wake() const {
  if (::eventfd_write(m_wake, 1) != 0) throw std::runtime_error("the bus program cannot be woken");
}

bool FakeService::takeDeeds() {
  eventfd_t count = 0;
  ::eventfd_read(m_wake, &count);
  std::unique_lock lock(m_mutex);
  while (!m_deeds.empty()) {
    std::packaged_task<void(sd_bus*)> deed = std::move(m_deeds.front());
    m_deeds.pop_front();
    lock.unlock();
    deed(m_bus);
    lock.lock();
  }
  return !m_isOver;
}

void FakeService::perform(const std::function<void(sd_bus*)>& deed) {
  std::packaged_task<void(sd_bus*)> task([&](sd_bus* bus) {
    deed(bus);
    sd_bus_flush(bus);
  });
  const std::future<void> done = task.get_future();
  {
    const std::lock_guard lock(m_mutex);
    m_deeds.push_back(std::move(task));
  }
  wake();
  done.wait();
}

void FakeService::refuse(const std::string& member, const std::string& error) {
  const std::lock_guard lock(m_mutex);
  m_refused[member] = error;
}

int FakeService::take(sd_bus_message* message, void* self, sd_bus_error*) {
  if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
  FakeService& service = *static_cast<FakeService*>(self);
  const std::string member = sd_bus_message_get_member(message);
  Answer answer;
  {
    const std::lock_guard lock(service.m_mutex);
    ++service.m_calls[member];
    if (service.m_ignored.contains(member)) return 1;
    if (const auto error = service.m_refused.find(member); error != service.m_refused.end()) {
      return sd_bus_reply_method_errorf(message, error->second.c_str(), "%s", "a test wants it so");
    }
    for (const std::string& path : {std::string(sd_bus_message_get_path(message)), std::string()}) {
      const auto found = service.m_answers.find({path, member});
      if (!answer && found != service.m_answers.end()) answer = found->second;
    }
  }
  if (!answer) return 0;
  sd_bus_message* reply = nullptr;
  if (sd_bus_message_new_method_return(message, &reply) < 0) return -1;
  answer(message, reply);
  const int status = sd_bus_send(nullptr, reply, nullptr);
  sd_bus_message_unref(reply);
  return status < 0 ? status : 1;
}

} // namespace vantle::desktop
