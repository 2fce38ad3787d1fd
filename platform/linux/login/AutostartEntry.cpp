// SPDX-License-Identifier: MIT
#include "platform/linux/login/AutostartEntry.h"

#include "base/Names.h"
#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/ProgramPath.h"

#include <algorithm>
#include <cstddef>
#include <glib.h>

namespace vantle {

namespace {

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* gnomeEnabled = "X-GNOME-Autostart-enabled";

struct Free {
  void operator()(gpointer memory) const { g_free(memory); }
  void operator()(gchar** list) const { g_strfreev(list); }
};
using Text = std::unique_ptr<gchar, Free>;
using TextList = std::unique_ptr<gchar*, Free>;

bool truth(GKeyFile* file, const char* key, bool fallback) {
  if (g_key_file_has_key(file, group, key, nullptr) == 0) return fallback;
  return g_key_file_get_boolean(file, group, key, nullptr) != 0;
}

std::optional<std::string> textOf(GKeyFile* file, const char* key) {
  const Text value(g_key_file_get_string(file, group, key, nullptr));
  return value ? std::optional<std::string>(value.get()) : std::nullopt;
}

// Whether the list under the key names one of the desktops; absent when there is no such list.
std::optional<bool> listsOneOf(GKeyFile* file, const char* key, const std::vector<std::string>& desktops) {
  const TextList list(g_key_file_get_string_list(file, group, key, nullptr, nullptr));
  if (!list) return std::nullopt;
  return std::any_of(desktops.begin(), desktops.end(), [&](const std::string& desktop) {
    return g_strv_contains(list.get(), desktop.c_str()) != 0;
  });
}

// Absolute, when it is there and may be run; otherwise empty.
std::string foundProgram(const std::string& program) {
  const std::string path = absolutePath(program);
  return isProgram(path) ? path : std::string();
}

// Has what follows as its own program; for paths that stand in no Exec line by themselves.
constexpr const char* shell = "/bin/sh";
constexpr const char* shellCommand = "exec \"$0\"";

// Quoted whole, so that only the four characters that stay special between quotes need a backslash; a percent
// sign would start a field code. The key file escapes its backslashes once more when it is written.
std::string quoted(std::string_view argument) {
  std::string value = "\"";
  for (const char c : argument) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') value += '\\';
    if (c == '%') value += '%';
    value += c;
  }
  return value + "\"";
}

} // namespace

struct AutostartEntry::KeyFile {
  struct Unref {
    void operator()(GKeyFile* file) const { g_key_file_unref(file); }
  };
  std::unique_ptr<GKeyFile, Unref> handle{g_key_file_new()};
  GKeyFile* get() const { return handle.get(); }

  bool load(std::string_view text) const {
    constexpr auto flags =
        static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    return g_key_file_load_from_data(get(), text.data(), text.size(), flags, nullptr) != 0;
  }
  std::string text() const {
    gsize length = 0;
    const Text data(g_key_file_to_data(get(), &length, nullptr));
    return {data.get(), length};
  }
  // As often as it is there: of a key that stands there twice the library takes out the last one and forgets
  // the first, which whoever reads the file next finds again.
  void remove(const char* key) const {
    while (g_key_file_has_key(get(), group, key, nullptr) != 0) {
      g_key_file_remove_key(get(), group, key, nullptr);
      if (!load(text())) return;
    }
  }
};

AutostartEntry::AutostartEntry() : m_file(std::make_unique<KeyFile>()) {}
AutostartEntry::~AutostartEntry() = default;
AutostartEntry::AutostartEntry(AutostartEntry&&) noexcept = default;
AutostartEntry& AutostartEntry::operator=(AutostartEntry&&) noexcept = default;

std::optional<AutostartEntry> AutostartEntry::parse(const std::string& text) {
  AutostartEntry entry;
  if (!entry.m_file->load(text)) return std::nullopt;
  if (g_key_file_has_group(entry.m_file->get(), group) == 0) return std::nullopt;
  return entry;
}

bool AutostartEntry::isShownIn(const std::vector<std::string>& desktops) const {
  return listsOneOf(m_file->get(), G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN, desktops).value_or(true) &&
         !listsOneOf(m_file->get(), G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN, desktops).value_or(false);
}

std::string AutostartEntry::startedProgram(const std::vector<std::string>& desktops) const {
  GKeyFile* const file = m_file->get();
  const auto type = textOf(file, G_KEY_FILE_DESKTOP_KEY_TYPE);
  if (type != G_KEY_FILE_DESKTOP_TYPE_APPLICATION) return {};
  if (truth(file, G_KEY_FILE_DESKTOP_KEY_HIDDEN, false) || !truth(file, gnomeEnabled, true)) return {};
  const auto needed = textOf(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
  if ((needed && foundProgram(*needed).empty()) || !isShownIn(desktops)) return {};
  return programOfExec(textOf(file, G_KEY_FILE_DESKTOP_KEY_EXEC).value_or(""));
}

void AutostartEntry::enable(const std::string& program, const std::vector<std::string>& desktops) {
  GKeyFile* const file = m_file->get();
  g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  if (!textOf(file, G_KEY_FILE_DESKTOP_KEY_NAME))
    g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_NAME, names::display);
  if (!textOf(file, G_KEY_FILE_DESKTOP_KEY_ICON))
    g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_ICON, names::identifier);
  g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_EXEC, execValue(program).c_str());
  g_key_file_set_boolean(file, group, gnomeEnabled, 1);
  m_file->remove(G_KEY_FILE_DESKTOP_KEY_HIDDEN);
  const auto needed = textOf(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
  if (needed && foundProgram(*needed).empty())
    g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, program.c_str());
  if (!isShownIn(desktops)) {
    m_file->remove(G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN);
    m_file->remove(G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN);
  }
}

void AutostartEntry::hide() {
  GKeyFile* const file = m_file->get();
  g_key_file_set_string(file, group, G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  g_key_file_set_boolean(file, group, G_KEY_FILE_DESKTOP_KEY_HIDDEN, 1);
}

std::string AutostartEntry::text() const { return m_file->text(); }

std::string execValue(std::string_view program) {
  // The standard allows no equals sign in the program's own name, and GIO looks for it with its percent signs
  // still doubled. As arguments both are fine.
  const bool awkward = program.find_first_of("%=") != std::string_view::npos;
  if (!awkward) return quoted(program);
  return std::string(shell) + " -c " + quoted(shellCommand) + " " + quoted(program);
}

std::string programOfExec(const std::string& exec) {
  const std::vector<std::string> words = programOf(exec);
  const bool isBehindShell =
      words.size() == 4 && words[0] == shell && words[1] == "-c" && words[2] == shellCommand;
  if (isBehindShell) return foundProgram(singlePercents(words[3]));
  const bool isToolkits = words.size() > 1 && words[1].starts_with("-") && !words[1].starts_with("--");
  return words.size() == 1 || isToolkits ? foundProgram(words[0]) : std::string();
}

} // namespace vantle
