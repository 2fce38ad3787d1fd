// SPDX-License-Identifier: MIT
#pragma once

#include "platform/darwin/band/BandLook.h"

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vantle {

// Whose doing it is that a process is in the band, while anybody is slowed. The kernel keeps the band through
// fork and exec but not who put it there, so it follows from who lived before the first one was slowed, whom
// this program has put in since, and who was born of whom.
//
// What nobody can know: an orphan that was born meanwhile counts as this program's, also when the person has
// put it in himself.
class BandMemory {
 public:
  explicit BandMemory(std::uint64_t began) : m_began(began) {} // in microseconds since the epoch

  // What an earlier program has left, whose own changes were undone: it had slowed nobody before that
  // moment. These lived by then as well, whatever their time says.
  static BandMemory ofAnEarlierProgram(std::uint64_t since, std::span<const ProcessIdentity> older);
  bool isOfAnEarlierProgram() const { return m_since.has_value(); }

  // Before the first one is slowed: of everybody.
  void lived(Pid pid, const std::optional<BandLook>& look);

  void entered(Pid pid, const std::optional<BandLook>& look);
  void left(const BandLook& look); // taken out by this program
  void seen(const BandLook& look); // nothing but who is out of the band follows from it

  // In the band, and by this program: put there, or born so.
  bool isOwn(const BandLook& look);
  // In the band by the person's doing or another program's, or born so.
  bool isOthers(const BandLook& look);
  // Born in the band of one that has left it since, and nobody has known it so far.
  bool isBornOfLeaver(const BandLook& look) const;

  // An exec that is under way when its process is taken out goes on with what that had before. So whoever is
  // in again right after counts as this program's, for as long as that is remembered.
  bool isInAgain(const BandLook& look) const;
  std::vector<Pid> takenOut() const;
  void forgetWhoWasTakenOut();

 private:
  enum class Standing : std::uint8_t {
    stranger, // never in the band by this program
    own,      // in it by this program
    left      // was, and has left: what it gave birth to before may still be in
  };
  struct Known {
    std::optional<ProcessIdentity> process; // absent: could not be read
    Standing standing = Standing::stranger;
    bool wasTakenOut = false; // by this program, just now
  };

  const Known* known(const ProcessIdentity& process) const; // null: it is not
  std::optional<Standing> standingOf(const BandLook& look) const;
  Standing origin(const BandLook& look) const;
  Standing judge(const BandLook& look);

  std::uint64_t m_began = 0;
  std::unordered_map<Pid, Known> m_known;
  std::optional<std::uint64_t> m_since; // of the earlier program's first change
  std::unordered_set<ProcessIdentity> m_older;
};

} // namespace vantle
