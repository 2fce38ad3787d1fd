// SPDX-License-Identifier: MIT
#include "platform/linux/windows/x11/X11Windows.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <xcb/res.h>

namespace vantle {

namespace {

constexpr std::uint32_t longestList = 64 * 1024; // bytes: 16,384 windows
constexpr std::uint32_t longestText = 1024;      // bytes
constexpr std::size_t mostDrafts = 32;           // windows that are asked about at a time

constexpr std::uint32_t everyDesktop = 0xFFFFFFFF; // a window's desktop, when it is on all of them
constexpr std::uint32_t onBehalfOfThePerson = 2;   // the source of a request, as the window manager reads it

constexpr auto atomNames = std::to_array<std::string_view>(
    {"_NET_CLIENT_LIST", "_NET_ACTIVE_WINDOW", "_NET_CLOSE_WINDOW", "_NET_CURRENT_DESKTOP", "_NET_WM_DESKTOP",
     "_NET_WM_PID", "_NET_WM_WINDOW_TYPE", "_GTK_APPLICATION_ID", "WM_PROTOCOLS", "WM_DELETE_WINDOW"});

constexpr auto typeNames = std::to_array<std::string_view>(
    {"NORMAL", "DIALOG", "UTILITY", "SPLASH", "TOOLBAR", "MENU", "DOCK", "DESKTOP", "NOTIFICATION", "TOOLTIP",
     "DROPDOWN_MENU", "POPUP_MENU", "COMBO", "DND"});

std::vector<std::uint32_t> numbers(const void* bytes, std::size_t size) {
  std::vector<std::uint32_t> values(size / sizeof(std::uint32_t));
  if (!values.empty()) std::memcpy(values.data(), bytes, values.size() * sizeof(std::uint32_t));
  return values;
}

std::string text(const void* bytes, std::size_t size) {
  return size == 0 ? std::string() : std::string(static_cast<const char*>(bytes), size);
}

Pid serverPid(const void* reply) {
  if (reply == nullptr) return 0;
  const auto* ids = static_cast<const xcb_res_query_client_ids_reply_t*>(reply);
  for (auto id = xcb_res_query_client_ids_ids_iterator(ids); id.rem > 0; xcb_res_client_id_value_next(&id)) {
    if (xcb_res_client_id_value_value_length(id.data) < 1) continue;
    return static_cast<Pid>(*xcb_res_client_id_value_value(id.data));
  }
  return 0;
}

// Both parts of WM_CLASS, each with a zero behind it.
void takeClass(WindowFacts& facts, const std::string& both) {
  const std::size_t end = std::min(both.find('\0'), both.size());
  facts.instance = both.substr(0, end);
  const std::string rest = both.substr(std::min(end + 1, both.size()));
  facts.className = rest.substr(0, rest.find('\0'));
}

std::string hostName() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string(name.data()) : std::string();
}

bool isOwnUsersProcess(Pid pid) {
  struct stat status {};
  return ::stat(("/proc/" + std::to_string(pid)).c_str(), &status) == 0 && status.st_uid == ::getuid();
}

} // namespace

// Facts that are still on their way.
struct X11Windows::Draft {
  std::uint32_t window = 0;
  WindowFacts facts;
  Pid serverSays = 0;
  Pid windowClaims = 0;
  std::string machine;
  bool isDoubtful = false; // something was announced while the answers were on their way
};

Pid ownerOf(Pid serverSays, Pid windowClaims, const std::string& windowMachine) {
  if (serverSays > 1) return serverSays;
  const bool isBelievable = windowClaims > 1 && !windowMachine.empty() && windowMachine == hostName() &&
                            isOwnUsersProcess(windowClaims);
  return isBelievable ? windowClaims : 0;
}

X11Windows::X11Windows(EventLoop& loop, const std::string& display, Closing closing)
    : m_closing(closing), m_connection(loop, display,
                                       {.ready = [this] { internAtoms(); },
                                        .event = [this](const xcb_generic_event_t& event) { handle(event); },
                                        .turnEnded = [this] { endTurn(); },
                                        .lost = [this] { lose(); }}) {
  static_assert(atomNames.size() == firstType && typeNames.size() == typeCount);
}

void X11Windows::internAtoms() {
  // Its answer is there before those of the atoms, so that the first use of it does not wait.
  xcb_prefetch_extension_data(m_connection.raw(), &xcb_res_id);
  for (std::size_t at = 0; at < m_atoms.size(); ++at) {
    const std::string name = at < firstType
                                 ? std::string(atomNames.at(at))
                                 : "_NET_WM_WINDOW_TYPE_" + std::string(typeNames.at(at - firstType));
    m_connection.learn(name, [this, at](xcb_atom_t atom) {
      m_atoms.at(at) = atom;
      if (at + 1 == m_atoms.size()) readAll();
    });
  }
}

void X11Windows::readAll() {
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(m_connection.raw(), m_connection.screen().root, XCB_CW_EVENT_MASK, &events);
  readClientList();
  readActiveWindow();
}

void X11Windows::handle(const xcb_generic_event_t& event) {
  constexpr std::uint8_t sentByClient = 0x80;
  const int type = event.response_type & ~sentByClient;
  if (type == XCB_DESTROY_NOTIFY)
    forgetWindow(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
  if (type != XCB_PROPERTY_NOTIFY) return;
  const auto& notice = reinterpret_cast<const xcb_property_notify_event_t&>(event);
  if (notice.window != m_connection.screen().root) return hear(notice.window, notice.atom);
  if (notice.atom == m_atoms[clientList]) readClientList();
  if (notice.atom == m_atoms[activeWindow]) readActiveWindow();
}

void X11Windows::getProperty(std::uint32_t window, xcb_atom_t property, std::uint32_t longestBytes,
                             OnProperty arrived) {
  const auto cookie =
      xcb_get_property(m_connection.raw(), 0, window, property, XCB_ATOM_ANY, 0, longestBytes / 4);
  m_connection.expect(cookie.sequence, [arrived = std::move(arrived)](const void* reply) {
    if (reply == nullptr) return arrived(nullptr, 0);
    const auto* value = static_cast<const xcb_get_property_reply_t*>(reply);
    arrived(xcb_get_property_value(value), static_cast<std::size_t>(xcb_get_property_value_length(value)));
  });
}

// Window managers announce the same change several times in a row: one question is under way at most, and one
// more is asked when something changed meanwhile.
void X11Windows::readClientList() {
  m_isListStale = m_isListAsked;
  if (std::exchange(m_isListAsked, true)) return;
  getProperty(m_connection.screen().root, m_atoms[clientList], longestList,
              [this](const void* bytes, std::size_t size) {
                m_isListAsked = false;
                takeClientList(numbers(bytes, size));
                if (m_isListStale) readClientList();
                reconcile();
              });
}

// A window that has left the list may still be named as the one in front: some window managers leave the name
// standing when there is nothing else to bring to the front. Then it is asked whether it is there at all.
void X11Windows::takeClientList(const std::vector<std::uint32_t>& list) {
  std::set<std::uint32_t> listed(list.begin(), list.end());
  listed.erase(0);
  for (const std::uint32_t window : m_list) {
    if (!listed.contains(window)) m_known.erase(window);
  }
  m_list = std::move(listed);
}

// The window manager may be slow to notice, and the number may be another process's by now.
void X11Windows::forgetWindow(std::uint32_t window) {
  m_known.erase(window);
  m_drafts.erase(window);
  m_notices.erase(window);
  if (isWanted(window)) m_missing.insert(window);
  m_isChanged = true;
}

void X11Windows::readActiveWindow() {
  m_isActiveStale = m_isActiveAsked;
  if (std::exchange(m_isActiveAsked, true)) return;
  getProperty(m_connection.screen().root, m_atoms[activeWindow], sizeof(std::uint32_t),
              [this](const void* bytes, std::size_t size) {
                m_isActiveAsked = false;
                const std::vector<std::uint32_t> values = numbers(bytes, size);
                m_active = values.empty() ? 0 : values.front();
                if (m_isActiveStale) readActiveWindow();
                reconcile();
              });
}

bool X11Windows::isWanted(WindowId window) const {
  const auto number = static_cast<std::uint32_t>(window);
  return number != 0 && (number == m_active || m_list.contains(number));
}

void X11Windows::reconcile() {
  const auto isGone = [this](const auto& entry) { return !isWanted(entry.first); };
  std::erase_if(m_known, isGone);
  std::erase_if(m_drafts, isGone);
  std::erase_if(m_notices, isGone);
  std::erase_if(m_missing, [this](std::uint32_t window) { return !isWanted(window); });
  m_processes.forgetUnused();
  m_missing.insert(m_list.begin(), m_list.end());
  if (m_active != 0) m_missing.insert(m_active);
  // One that was nobody's may have got its number anew since it was asked about, and the one in front may
  // have a descriptor where the others may not.
  std::erase_if(m_missing, [this](std::uint32_t window) {
    const auto known = m_known.find(window);
    const bool isKnown =
        known != m_known.end() && known->second.pid != 0 && (known->second.process || window != m_active);
    return isKnown || m_drafts.contains(window);
  });
  for (const auto& [window, draft] : m_drafts) draft->isDoubtful = true;
  m_isChanged = true;
}

void X11Windows::askMissing() {
  if (m_missing.erase(m_active) > 0) readOwner(m_active);
  while (!m_missing.empty() && m_drafts.size() < mostDrafts) {
    readOwner(m_missing.extract(m_missing.begin()).value());
  }
}

void X11Windows::endTurn() {
  askMissing();
  if (std::exchange(m_isChanged, false)) m_handlers.changed();
}

// Its end is always listened to.
void X11Windows::listenTo(std::uint32_t window) {
  const bool isEnough = !isWanted(window) || m_notices[window] >= mostNotices;
  const std::uint32_t events =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | (isEnough ? 0U : std::uint32_t{XCB_EVENT_MASK_PROPERTY_CHANGE});
  xcb_change_window_attributes(m_connection.raw(), window, XCB_CW_EVENT_MASK, &events);
}

void X11Windows::hear(std::uint32_t window, xcb_atom_t property) {
  if (!isWanted(window)) return listenTo(window);
  if (property == XCB_ATOM_WM_CLASS || property == m_atoms[gtkApplicationId]) readAgain(window, property);
  if (++m_notices[window] == mostNotices) listenTo(window);
}

void X11Windows::readOwner(std::uint32_t window) {
  auto draft = std::make_shared<Draft>();
  draft->window = window;
  draft->facts.id = window;
  m_drafts[window] = draft;
  listenTo(window); // before the questions, so that no end of the window after the answers stays unheard

  const xcb_query_extension_reply_t* resources = xcb_get_extension_data(m_connection.raw(), &xcb_res_id);
  if (resources != nullptr && resources->present != 0) {
    const xcb_res_client_id_spec_t spec{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto cookie = xcb_res_query_client_ids(m_connection.raw(), 1, &spec);
    m_connection.expect(cookie.sequence,
                        [draft](const void* reply) { draft->serverSays = serverPid(reply); });
  }
  getProperty(window, m_atoms[wmPid], sizeof(std::uint32_t), [draft](const void* bytes, std::size_t size) {
    const std::vector<std::uint32_t> values = numbers(bytes, size);
    if (!values.empty()) draft->windowClaims = static_cast<Pid>(values.front());
  });
  getProperty(window, XCB_ATOM_WM_CLIENT_MACHINE, longestText,
              [this, draft](const void* bytes, std::size_t size) {
                draft->machine = text(bytes, size);
                readFacts(draft);
              });
}

void X11Windows::readFacts(const std::shared_ptr<Draft>& draft) {
  WindowFacts& facts = draft->facts;
  facts.pid = ownerOf(draft->serverSays, draft->windowClaims, draft->machine);
  // The window answers the questions below after this, so the process was still the one that opened it.
  if (facts.pid != 0) facts.process = m_processes.open(facts.pid, draft->window == m_active);
  if (!facts.process && ::kill(facts.pid, 0) != 0 && errno == ESRCH) facts.pid = 0;

  getProperty(draft->window, XCB_ATOM_WM_CLASS, longestText,
              [draft](const void* bytes, std::size_t size) { takeClass(draft->facts, text(bytes, size)); });
  getProperty(
      draft->window, m_atoms[windowType], longestText, [this, draft](const void* bytes, std::size_t size) {
        std::vector<std::string> types;
        for (const std::uint32_t type : numbers(bytes, size)) {
          const auto found = std::find(m_atoms.begin() + firstType, m_atoms.end(), type);
          if (found == m_atoms.end()) continue;
          types.emplace_back(typeNames.at(static_cast<std::size_t>(found - m_atoms.begin()) - firstType));
        }
        draft->facts.kind = windowKindOf(types);
      });
  getProperty(
      draft->window, m_atoms[gtkApplicationId], longestText,
      [draft](const void* bytes, std::size_t size) { draft->facts.applicationId = text(bytes, size); });
  getProperty(draft->window, m_atoms[protocols], longestText,
              [this, draft](const void* bytes, std::size_t size) {
                const std::vector<std::uint32_t> taken = numbers(bytes, size);
                draft->facts.canBeClosed =
                    std::find(taken.begin(), taken.end(), m_atoms[deleteWindow]) != taken.end();
              });
  // The last question: does the window still stand?
  const auto cookie = xcb_get_geometry(m_connection.raw(), draft->window);
  m_connection.expect(cookie.sequence, [this, draft](const void* reply) {
    if (reply == nullptr) draft->facts.pid = 0;
    finish(draft);
  });
}

// What a window of that number says now is right, whosever it is.
void X11Windows::readAgain(std::uint32_t window, xcb_atom_t name) {
  getProperty(window, name, longestText, [this, window, name](const void* bytes, std::size_t size) {
    const auto draft = m_drafts.find(window);
    const auto known = m_known.find(window);
    if (draft == m_drafts.end() && known == m_known.end()) return;
    WindowFacts& facts = draft == m_drafts.end() ? known->second : draft->second->facts;
    name == XCB_ATOM_WM_CLASS ? takeClass(facts, text(bytes, size))
                              : static_cast<void>(facts.applicationId = text(bytes, size));
    m_isChanged = true;
  });
}

void X11Windows::finish(const std::shared_ptr<Draft>& draft) {
  const auto found = m_drafts.find(draft->window);
  if (found == m_drafts.end() || found->second != draft) return;
  m_drafts.erase(found);
  if (draft->isDoubtful && draft->facts.pid == 0) m_missing.insert(draft->window);
  m_known.insert_or_assign(draft->window, std::move(draft->facts));
  m_isChanged = true;
}

void X11Windows::forget(Pid pid) {
  // There is a descriptor now for one that got none before.
  std::erase_if(m_known,
                [pid](const auto& entry) { return entry.second.pid == pid || !entry.second.process; });
  std::erase_if(m_drafts, [pid](const auto& entry) {
    return entry.second->facts.pid == pid || entry.second->serverSays == pid;
  });
  m_processes.forget(pid);
  // A window manager that is slow to notice still lists them, and a number may go to a new window.
  reconcile();
  if (!m_connection.isOpen()) return m_handlers.changed();
  endTurn();
  m_connection.flush();
}

bool X11Windows::requestClose(const WindowFacts& window) {
  if (!m_connection.isOpen() || !window.canBeClosed) return false;
  constexpr std::uint32_t now = XCB_CURRENT_TIME;
  const auto id = static_cast<xcb_window_t>(window.id);
  if (m_closing == Closing::byManager) {
    askManager(id, m_atoms[closeWindow], {now, onBehalfOfThePerson});
  } else {
    send(id, m_atoms[protocols], {m_atoms[deleteWindow], now}, id, XCB_EVENT_MASK_NO_EVENT);
  }
  m_connection.flush();
  return true;
}

bool X11Windows::requestFront(const WindowFacts& window) {
  if (!m_connection.isOpen()) return false;
  const auto id = static_cast<xcb_window_t>(window.id);
  getProperty(id, m_atoms[windowDesktop], sizeof(std::uint32_t),
              [this, id](const void* bytes, std::size_t size) {
                const std::vector<std::uint32_t> desktop = numbers(bytes, size);
                // Some window managers only let one of another desktop ask for attention.
                if (!desktop.empty() && desktop.front() != everyDesktop)
                  askManager(m_connection.screen().root, m_atoms[currentDesktop],
                             {desktop.front(), XCB_CURRENT_TIME});
                askManager(id, m_atoms[activeWindow], {onBehalfOfThePerson, XCB_CURRENT_TIME});
                m_connection.flush();
              });
  m_connection.flush();
  return true;
}

void X11Windows::askManager(xcb_window_t about, xcb_atom_t type, std::array<std::uint32_t, 2> data) {
  send(about, type, data, m_connection.screen().root,
       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
}

void X11Windows::send(xcb_window_t about, xcb_atom_t type, std::array<std::uint32_t, 2> data, xcb_window_t to,
                      std::uint32_t mask) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = about;
  message.type = type;
  std::copy(data.begin(), data.end(), std::begin(message.data.data32));
  xcb_send_event(m_connection.raw(), 0, to, mask, reinterpret_cast<const char*>(&message));
}

void X11Windows::lose() {
  m_list.clear();
  m_known.clear();
  m_drafts.clear();
  m_missing.clear();
  m_notices.clear();
  m_processes.clear();
  m_active = 0;
  m_handlers.lost();
}

} // namespace vantle
