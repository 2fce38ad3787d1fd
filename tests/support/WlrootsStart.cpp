// SPDX-License-Identifier: MIT
#include "tests/support/WlrootsStart.h"

#include "tests/support/Wait.h"

#include <fstream>
#include <stdexcept>

namespace vantle::desktop {

namespace fs = std::filesystem;

Program& startWlroots(PrivateSession& session,
                      const std::function<std::vector<std::string>(const std::string& line)>& command,
                      const std::vector<std::string>& variables, int screens) {
  const fs::path told = session.runtimeDir() / "compositor.names";
  std::string names;
  for (const std::string& variable : variables) names += " \"$" + variable + "\"";
  const fs::path script = session.folder().write(
      "tell-names", "printf '%s\\n'" + names + " >'" + told.string() + ".new' && mv '" + told.string() +
                        ".new' '" + told.string() + "'\n");
  Program& compositor =
      session.launch(command("sh " + script.string()), {{"WLR_BACKENDS", "headless"},
                                                        {"WLR_HEADLESS_OUTPUTS", std::to_string(screens)},
                                                        {"WLR_LIBINPUT_NO_DEVICES", "1"},
                                                        {"WLR_RENDERER", "pixman"}});
  require("the compositor", [&] { return fs::exists(told) || !compositor.isRunning(); });
  std::ifstream answers(told);
  for (const std::string& variable : variables) {
    std::string name;
    if (!std::getline(answers, name)) throw std::runtime_error("the compositor did not come up");
    session.setEnvironment(variable, name);
  }
  return compositor;
}

} // namespace vantle::desktop
