// SPDX-License-Identifier: MIT
#include "engine/Backgrounder.h"

#include "engine/ProcessQueries.h"

#include <algorithm>
#include <memory>
#include <string>

namespace vantle {

namespace {

// Each look finds only what was born during the one before and escaped it.
constexpr int mostLooks = 4;

std::string nameOf(const RunningApplication& app) {
  return app.localizedName().value_or("pid " + std::to_string(app.processIdentifier()));
}

template <class Container, class Item> bool contains(const Container& container, const Item& item) {
  return std::find(container.begin(), container.end(), item) != container.end();
}

} // namespace

Backgrounder::Backgrounder(const Machine& machine) : m_machine(machine), m_journal(machine.files) {}

void Backgrounder::recover() {
  m_journal.restoreAllAndClear(m_machine.processes, m_machine.band);
  m_machine.band.reclaim(nullptr);
}

bool Backgrounder::isSame(const ProcessIdentity& identity) const {
  return isSameLiveProcess(m_machine.processes, identity);
}

AppTrees Backgrounder::look() const {
  AppTrees::Known known;
  known.self = m_machine.host.selfPID();
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    if (!app->isTerminated()) known.apps.insert(app->processIdentifier());
  }
  for (const auto& [pid, app] : m_managed) {
    known.roots.push_back(app.root);
    for (const ProcessIdentity& member : app.members) known.members.emplace_back(member, pid);
  }
  return {m_machine.processes, known};
}

void Backgrounder::makeRoomFor(Pid boostApp) {
  std::optional<AppTrees> trees;
  m_machine.band.makeRoomFor(boostApp, [&]() -> const ProcessView& { return trees.emplace(look()); });
}

AppTrees Backgrounder::manage(std::span<const AppRef> apps, Pid boostApp, const Judge& judge) {
  AppTrees trees = look();
  std::vector<Entering> entering = chosen(apps, judge, trees);
  std::unordered_set<ProcessIdentity> seen;
  bool isSorting = !m_managed.empty();
  for (int count = 0; count < mostLooks; ++count) {
    if (count > 0) trees = look();
    for (Entering& one : entering) collect(one, trees, seen);
    // Whoever was born of one that was just freed may still carry the mark.
    if (isSorting) isSorting = sortOut(trees, entering, boostApp) && trees.birthMark() && !isCurrent(trees);
    std::erase_if(entering, [](const Entering& one) { return one.processes.empty(); });
    if (entering.empty() && isSorting) continue;
    if (entering.empty()) break;
    enter(entering, boostApp, trees);
    if (!trees.birthMark() || isCurrent(trees)) break;
    std::erase_if(entering, [this](const Entering& one) { return !m_managed.contains(one.root.pid); });
  }
  complete(trees, boostApp, judge);
  return trees;
}

// What a slowed app starts is born with what is slowed of a process, but not with what is slowed of a
// session: a new one has its full weight. An app that would be spared by now gets no further in.
void Backgrounder::complete(const AppTrees& trees, Pid boostApp, const Judge& judge) {
  std::map<Pid, std::map<Pid, Entering>> byApp;
  for (const auto& [root, app] : m_managed) {
    if (auto bySession = bornElsewhere(app, trees); !bySession.empty())
      byApp.emplace(root, std::move(bySession));
  }
  if (byApp.empty()) return;
  std::vector<Entering> entering;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    const auto found = byApp.find(app->processIdentifier());
    if (found == byApp.end() || judge(*app, trees, Asking::again) != Verdict::slowed) continue;
    for (auto& [session, one] : found->second) entering.push_back(std::move(one));
    byApp.erase(found);
  }
  if (!entering.empty()) enter(entering, boostApp, trees);
}

bool Backgrounder::isAnyIncomplete(const AppTrees& trees) const {
  return std::any_of(m_managed.begin(), m_managed.end(),
                     [&](const auto& entry) { return !bornElsewhere(entry.second, trees).empty(); });
}

// Of a listed app's processes those that stand in sessions which nobody of it was slowed in, by session.
std::map<Pid, Backgrounder::Entering> Backgrounder::bornElsewhere(const ManagedApp& app,
                                                                  const AppTrees& trees) const {
  std::set<Pid> known{0};
  for (const ProcessIdentity& member : app.members) {
    const ProcessRecord* const record = trees.find(member.pid);
    if (record != nullptr && identityOf(*record) == member) known.insert(record->session);
  }
  std::map<Pid, Entering> bySession;
  for (const Pid pid : trees.processesOf(app.root.pid)) {
    const ProcessRecord* const record = trees.find(pid);
    if (record == nullptr || known.contains(record->session)) continue;
    const ProcessIdentity identity = identityOf(*record);
    if (m_refusedLater.contains(identity) || !isSame(identity)) continue;
    const bool isIn = m_machine.band.isInBackgroundBand(pid) == true;
    if (isIn && !isOwnDoing(pid, trees)) continue;
    Entering& one = bySession[record->session];
    one.root = app.root;
    one.isLater = true;
    one.processes.push_back(identity);
  }
  return bySession;
}

std::vector<Backgrounder::Entering> Backgrounder::chosen(std::span<const AppRef> apps, const Judge& judge,
                                                         const AppTrees& trees) {
  std::vector<Entering> all;
  for (const AppRef& app : apps) {
    const Pid pid = app->processIdentifier();
    const bool isTwice =
        std::any_of(all.begin(), all.end(), [pid](const auto& one) { return one.root.pid == pid; });
    if (isTwice) continue;
    const Verdict verdict = judge(*app, trees, Asking::first);
    if (verdict != Verdict::slowedAlready) note(pid, verdict);
    if (verdict != Verdict::slowed) continue;
    const std::optional<ProcessIdentity> root = readIdentity(m_machine.processes, pid);
    if (root) all.push_back({app, *root, m_machine.clock.processMicros(), {}});
  }
  return all;
}

bool Backgrounder::isOwnDoing(Pid pid, const AppTrees& trees) const {
  const ProcessRecord* record = trees.find(pid);
  return m_machine.band.carriesOwnMark(pid) ||
         (record != nullptr && m_journal.entries().contains(identityOf(*record)));
}

// Those of an app's processes that are to enter now.
void Backgrounder::collect(Entering& entering, const AppTrees& trees,
                           std::unordered_set<ProcessIdentity>& seen) const {
  entering.processes.clear();
  const auto listed = m_managed.find(entering.root.pid);
  for (const Pid pid : trees.processesOf(entering.root.pid)) {
    // What is in the band already was put there by somebody else, who will take it out again; unless it is
    // this program's doing, because it was slowed, or born, as a part of another app.
    const bool isIn = m_machine.band.isInBackgroundBand(pid) == true;
    if (isIn && !isOwnDoing(pid, trees)) continue;
    const std::optional<ProcessIdentity> identity = readIdentity(m_machine.processes, pid);
    if (!identity || !seen.insert(*identity).second) continue;
    if (listed != m_managed.end() && contains(listed->second.members, *identity)) continue;
    entering.processes.push_back(*identity);
  }
}

void Backgrounder::enter(const std::vector<Entering>& all, Pid boostApp, const AppTrees& trees) {
  std::vector<ProcessIdentity> recorded;
  std::vector<BandApp> apps;
  for (const Entering& one : all) {
    recorded.insert(recorded.end(), one.processes.begin(), one.processes.end());
    BandApp& app = apps.emplace_back(BandApp{one.root.pid, {}});
    for (const ProcessIdentity& process : one.processes) app.candidates.push_back(process.pid);
  }
  m_journal.add(recorded);
  const std::vector<std::vector<BandAnswer>> answers =
      m_machine.band.enter({trees, boostApp, apps, slowedApps()});

  std::vector<ProcessIdentity> failed;
  std::unordered_set<ProcessIdentity> keptAsBorn;
  for (std::size_t at = 0; at < all.size(); ++at) {
    const Entering& one = all[at];
    AppVerdict ofLater;
    AppVerdict& verdict = one.isLater ? ofLater : m_verdicts[one.root.pid];
    std::vector<ProcessIdentity> members;
    for (std::size_t index = 0; index < one.processes.size(); ++index) {
      const BandAnswer& answer = answers.at(at).at(index);
      (answer.entered() ? members : failed).push_back(one.processes[index]);
      if (one.isLater && !answer.entered()) keptAsBorn.insert(one.processes[index]);
      if (answer.entered() && !verdict.lever) verdict.lever = answer.lever;
      if (!answer.entered() && !verdict.refusal) verdict.refusal = answer.refusal;
    }
    const auto listed = m_managed.find(one.root.pid);
    if (listed != m_managed.end()) {
      auto& known = listed->second.members;
      known.insert(known.end(), members.begin(), members.end());
      // Slowed in part only, since one that was born meanwhile shares its place with something else.
      if (!one.isLater &&
          std::any_of(answers.at(at).begin(), answers.at(at).end(),
                      [](const BandAnswer& answer) { return answer.refusal == BandRefusal::shared; })) {
        failed.insert(failed.end(), known.begin(), known.end());
        giveUp(one.root.pid);
      }
    } else if (!members.empty()) {
      m_givenUp.erase(one.root.pid);
      m_managed.emplace(one.root.pid, ManagedApp{nameOf(*one.app), one.app->bundleIdentifier(), one.root,
                                                 std::move(members), one.changedAtMicros});
    } else {
      verdict.verdict = Verdict::refused;
    }
  }
  // What was born slowed and may not be slowed on its own account comes out.
  std::vector<ProcessIdentity> marked;
  std::copy_if(failed.begin(), failed.end(), std::back_inserter(marked), [&](const ProcessIdentity& one) {
    return !keptAsBorn.contains(one) && m_machine.band.carriesOwnMark(one.pid);
  });
  if (!marked.empty()) leave(marked, boostApp, trees);
  m_journal.remove(failed);
  m_refusedLater.merge(keptAsBorn);
}

void Backgrounder::rename(const RunningApplication& app) {
  const auto known = m_managed.find(app.processIdentifier());
  if (known == m_managed.end()) return;
  known->second.name = nameOf(app);
  known->second.bundleID = app.bundleIdentifier();
}

void Backgrounder::forget(Pid app) {
  m_verdicts.erase(app);
  m_givenUp.erase(app);
}

void Backgrounder::giveUp(Pid app) {
  m_managed.erase(app);
  m_givenUp.insert(app);
  m_verdicts[app] = {Verdict::refused, {}, BandRefusal::shared};
}

std::set<Pid> Backgrounder::slowedApps() const {
  std::set<Pid> apps;
  for (const auto& [pid, app] : m_managed) apps.insert(pid);
  return apps;
}

// Puts processes back and looks after those that lost their place with them.
void Backgrounder::leave(const std::vector<ProcessIdentity>& processes, Pid boostApp, const AppTrees& trees) {
  const std::unique_ptr<BackgroundBand::Leaving> leaving = m_machine.band.leaving(trees);
  for (const ProcessIdentity& process : processes) {
    if (isSame(process)) leaving->leave(process.pid);
  }
  retry(leaving->finish(), boostApp, trees);
}

// Makes the lists fit who owns what by now. An app that got its first window late was slowed as a part of
// another one, and what a slowed app starts is born slowed.
bool Backgrounder::sortOut(const AppTrees& trees, const std::vector<Entering>& entering, Pid boostApp) {
  const auto isListed = [&](Pid app) {
    return m_managed.contains(app) || std::any_of(entering.begin(), entering.end(),
                                                  [app](const auto& one) { return one.root.pid == app; });
  };
  std::vector<ProcessIdentity> freed;
  std::vector<std::pair<Pid, ProcessIdentity>> handedOver;
  for (auto& [root, app] : m_managed) {
    std::erase_if(app.members, [&, holder = root](const ProcessIdentity& member) {
      const Pid owner = trees.ownerOf(member);
      if (owner == 0 || owner == holder) return false;
      if (m_managed.contains(owner)) {
        handedOver.emplace_back(owner, member);
      } else if (!isListed(owner)) {
        freed.push_back(member);
      }
      return true;
    });
  }
  for (const auto& [app, member] : handedOver) m_managed.at(app).members.push_back(member);
  std::erase_if(m_managed, [](const auto& entry) { return entry.second.members.empty(); });

  const std::size_t journalled = freed.size();
  for (const ProcessRecord& record : trees.all()) {
    if (record.isKernelThread || isListed(trees.appOf(record.pid))) continue;
    if (!m_machine.band.carriesOwnMark(record.pid)) continue;
    const ProcessIdentity identity = identityOf(record);
    if (!contains(freed, identity)) freed.push_back(identity);
  }
  if (freed.empty()) return false;
  leave(freed, boostApp, trees);
  freed.resize(journalled);
  m_journal.remove(freed);
  return true;
}

std::optional<AppTrees> Backgrounder::restore(Pid app, Pid boostApp, std::optional<AppTrees> earlier) {
  const auto listed = m_managed.find(app);
  // Told by one call, as nearly always: nobody is slowed, or this app has inherited nothing.
  if (listed == m_managed.end() && (m_managed.empty() || !m_machine.band.carriesOwnMark(app))) return {};
  AppTrees trees = earlier && isCurrent(*earlier) ? std::move(*earlier) : look();
  if (listed != m_managed.end()) {
    const ManagedApp restored = std::move(listed->second);
    m_managed.erase(listed);
    putBack({&restored, 1}, boostApp, trees);
  }
  if (!m_managed.empty()) return sweep(std::move(trees), boostApp);
  reclaim(trees);
  return trees;
}

void Backgrounder::sweep(Pid boostApp) {
  if (m_managed.empty()) {
    m_machine.band.reclaim(nullptr);
  } else {
    sweep(look(), boostApp);
  }
}

AppTrees Backgrounder::sweep(AppTrees trees, Pid boostApp) {
  // What was born of a process whose turn was still to come has inherited the band.
  for (int count = 0; count < mostLooks; ++count) {
    if (count > 0) trees = look();
    sortOut(trees, {}, boostApp);
    if (!trees.birthMark() || isCurrent(trees)) break;
  }
  return trees;
}

void Backgrounder::restoreAll() {
  if (m_managed.empty()) {
    m_machine.band.reclaim(nullptr);
  } else {
    const AppTrees trees = look();
    std::vector<ManagedApp> all;
    all.reserve(m_managed.size());
    for (auto& [pid, app] : m_managed) all.push_back(std::move(app));
    m_managed.clear();
    putBack(all, 0, trees);
    reclaim(trees);
  }
  m_givenUp.clear();
  m_verdicts.clear();
}

// Nobody was born since.
bool Backgrounder::isCurrent(const AppTrees& trees) const {
  return trees.isCurrent(m_machine.processes.birthMark());
}

void Backgrounder::reclaim(const AppTrees& trees) {
  m_machine.band.reclaim(isCurrent(trees) ? &trees : nullptr);
}

void Backgrounder::putBack(std::span<const ManagedApp> apps, Pid boostApp, const AppTrees& trees) {
  const ProcessTable& processes = m_machine.processes;
  const std::unique_ptr<BackgroundBand::Leaving> leaving = m_machine.band.leaving(trees);
  std::vector<ProcessIdentity> forgotten;
  for (const ManagedApp& app : apps) {
    // Children that were born slowed are nobody's members: found by their age, while the root still stands.
    if (isSame(app.root)) {
      for (const Pid pid : trees.processesOf(app.root.pid)) {
        const std::optional<ProcessIdentity> identity = readIdentity(processes, pid);
        if (!identity || startMicros(*identity) < app.changedAtMicros) continue;
        if (m_machine.band.isInBackgroundBand(pid) == true) {
          leaving->leave(pid);
        } else {
          leaving->releaseInherited(pid);
        }
      }
    }
    for (const ProcessIdentity& member : app.members) {
      if (isSame(member)) leaving->leave(member.pid);
    }
    forgotten.insert(forgotten.end(), app.members.begin(), app.members.end());
  }
  retry(leaving->finish(), boostApp, trees);
  m_journal.remove(forgotten);
  m_refusedLater.clear(); // it may be these that stood in their way
}

// Those that lost their place with one that left it are slowed in another way, or given up.
void Backgrounder::retry(const std::vector<Pid>& raised, Pid boostApp, const AppTrees& trees) {
  std::set<Pid> owners;
  for (const Pid pid : raised) {
    if (const Pid app = trees.appOf(pid); m_managed.contains(app)) owners.insert(app);
  }
  if (owners.empty()) return;
  std::vector<BandApp> apps;
  for (const Pid owner : owners) {
    BandApp& app = apps.emplace_back(BandApp{owner, {}});
    for (const ProcessIdentity& member : m_managed.at(owner).members) {
      if (trees.ownerOf(member) != 0) app.candidates.push_back(member.pid);
    }
  }
  const auto answers = m_machine.band.enter({trees, boostApp, apps, slowedApps()});
  std::vector<ProcessIdentity> lost;
  for (std::size_t at = 0; at < apps.size(); ++at) {
    std::vector<ProcessIdentity>& members = m_managed.at(apps[at].root).members;
    for (std::size_t index = 0; index < answers[at].size(); ++index) {
      if (answers[at][index].entered()) continue;
      const Pid pid = apps[at].candidates[index];
      const auto member = std::find_if(members.begin(), members.end(),
                                       [pid](const ProcessIdentity& one) { return one.pid == pid; });
      lost.push_back(*member);
      members.erase(member);
    }
    // Whoever has ended meanwhile keeps nobody listed.
    const bool anyLives = std::any_of(members.begin(), members.end(),
                                      [this](const ProcessIdentity& one) { return isSame(one); });
    if (anyLives) continue;
    lost.insert(lost.end(), members.begin(), members.end());
    giveUp(apps[at].root);
  }
  if (lost.empty()) return;
  leave(lost, boostApp, trees);
  m_journal.remove(lost);
}

} // namespace vantle
