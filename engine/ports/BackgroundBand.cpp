// SPDX-License-Identifier: MIT
#include "engine/ports/BackgroundBand.h"

namespace vantle {

std::vector<std::vector<BandAnswer>> BackgroundBand::enter(const BandPass& pass) {
  std::vector<std::vector<BandAnswer>> answers;
  answers.reserve(pass.apps.size());
  for (const BandApp& app : pass.apps) {
    std::vector<BandAnswer>& ofApp = answers.emplace_back();
    for (const Pid pid : app.candidates) {
      BandAnswer& answer = ofApp.emplace_back();
      if (!enterBackgroundBand(pid)) answer.refusal = BandRefusal::notAllowed;
    }
  }
  return answers;
}

std::unique_ptr<BackgroundBand::Leaving> BackgroundBand::leaving(const ProcessView& /*view*/) {
  class OneByOne final : public Leaving {
   public:
    explicit OneByOne(BackgroundBand& band) : m_band(band) {}
    bool leave(Pid pid) override { return m_band.leaveBackgroundBand(pid); }

   private:
    BackgroundBand& m_band;
  };
  return std::make_unique<OneByOne>(*this);
}

} // namespace vantle
