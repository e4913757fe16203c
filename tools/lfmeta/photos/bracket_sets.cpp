#include "photos/bracket_sets.h"

#include <LumenforgeMetaLib.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <map>
#include <string_view>
#include <tuple>

#include "base/report.h"

namespace lfmeta {

namespace {

constexpr double kSameExposure = 0.17;  // EV; half the smallest step that cameras have
constexpr double kLeastRange = 0.9;     // EV, where nothing but the exposures tells of a bracket

using Frames = std::vector<const Shot*>;

// The library counts to a reference in single precision, exactly up to 2^24 seconds: first to a far
// one, then to one nearby.
std::optional<double> secondsOf(const std::string& text) {
  float seconds = 0;
  if (time_from_datetime(text.c_str(), 0, &seconds) != 1) return std::nullopt;
  const auto nearby = static_cast<time_t>(-seconds);
  if (time_from_datetime(text.c_str(), nearby, &seconds) != 1) return std::nullopt;
  return static_cast<double>(nearby) - static_cast<double>(seconds);
}

// "25" is a quarter of a second.
std::optional<double> fractionOf(std::string_view digits) {
  const bool onlyDigits =
      std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (digits.empty() || !onlyDigits) return std::nullopt;
  double fraction = 0;
  double unit = 0.1;
  for (const char digit : digits) {
    fraction += unit * (digit - '0');
    unit /= 10;
  }
  return fraction;
}

// What all frames of a set share.
auto keyOf(const Shot& shot) {
  const std::string_view file = shot.file;
  const std::size_t name = file.rfind('/') + 1;
  const std::string_view folder = file.substr(0, name);
  const std::size_t dot = file.rfind('.');
  const bool ending = dot != std::string_view::npos && dot > name;
  return std::tuple(folder, ending ? file.substr(dot) : std::string_view(),
                    std::string_view(shot.make), std::string_view(shot.model),
                    std::string_view(shot.serialNumber), std::string_view(shot.lens));
}

bool isEarlier(const Shot& a, const Shot& b) {
  if (a.taken != b.taken) return a.taken < b.taken;
  return strverscmp(a.file.c_str(), b.file.c_str()) < 0;
}

bool sameBias(const Shot& a, const Shot& b) {
  return a.exposureBias && b.exposureBias &&
         std::abs(*a.exposureBias - *b.exposureBias) < static_cast<float>(kSameExposure);
}

bool biasVaries(const Frames& frames) {
  return std::all_of(frames.begin(), frames.end(), [](auto* f) { return f->exposureBias; }) &&
         std::any_of(frames.begin(), frames.end(),
                     [&](auto* f) { return !sameBias(*f, *frames.front()); });
}

double gapBetween(const Shot& before, const Shot& after) {
  return after.taken - before.taken - static_cast<double>(before.exposureTime);
}

// Most cameras note when a frame begins, some when it ends.
bool areClose(const Shot& before, const Shot& after, double longestGap) {
  const double apart = after.taken - before.taken;
  return gapBetween(before, after) <= longestGap ||
         std::abs(apart - static_cast<double>(after.exposureTime)) <= longestGap;
}

// No camera takes two photographs of one exposure at one moment: they are copies of one, and each
// copy goes to a roll of its own. `shots` are in the order taken.
std::vector<Frames> rollsOf(const Frames& shots) {
  std::vector<Frames> rolls;
  std::map<double, std::size_t> copies;  // of this moment, by brightness
  const Shot* last = nullptr;
  for (const Shot* shot : shots) {
    const bool sameMoment = last != nullptr && last->exact && shot->exact &&
                            last->taken == shot->taken && keyOf(*last) == keyOf(*shot);
    if (!sameMoment) copies.clear();
    const std::size_t roll = copies[shot->brightness()]++;
    if (roll == rolls.size()) rolls.emplace_back();
    rolls[roll].push_back(shot);
    last = shot;
  }
  return rolls;
}

// Whether the shot can be one more frame of the set that ends with `last`.
bool follows(const Shot& last, const Shot& shot, double longestGap) {
  const double rounding = last.exact && shot.exact ? 0 : 1;
  return keyOf(last) == keyOf(shot) && areClose(last, shot, longestGap + rounding) &&
         last.focalLength == shot.focalLength && last.width == shot.width &&
         last.height == shot.height && last.automatic == shot.automatic;
}

// A set has each exposure once.
bool repeats(const Frames& frames, const Shot& shot) {
  const bool byBias = biasVaries(frames);
  return std::any_of(frames.begin(), frames.end(), [&](const Shot* frame) {
    return std::abs(frame->brightness() - shot.brightness()) < kSameExposure ||
           (byBias && sameBias(*frame, shot));
  });
}

// Cuts what one camera took, in the order taken, into stretches that may be sets.
std::vector<Frames> cut(const Frames& shots, double longestGap) {
  std::vector<Frames> stretches;
  for (const Shot* shot : shots) {
    if (stretches.empty() || !follows(*stretches.back().back(), *shot, longestGap) ||
        repeats(stretches.back(), *shot)) {
      stretches.push_back({shot});
      continue;
    }
    Frames& current = stretches.back();
    const Shot* last = current.back();
    // Where the camera changes its bias, a frame before that belongs to it and those before do not.
    if (current.size() > 1 && last->exposureBias && shot->exposureBias && !biasVaries(current) &&
        !sameBias(*last, *shot)) {
      current.pop_back();
      stretches.push_back({last, shot});
    } else {
      current.push_back(shot);
    }
  }
  return stretches;
}

double rounded(double number, int parts) {
  return std::round(number * parts) / parts;
}

void measure(BracketSet& set) {
  const Frames& frames = set.frames;
  std::vector<std::size_t> byBrightness(frames.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    byBrightness[i] = i;
    if (i > 0) {
      set.gaps.push_back(rounded(std::max(gapBetween(*frames[i - 1], *frames[i]), 0.0), 1000));
    }
  }
  std::sort(byBrightness.begin(), byBrightness.end(), [&](std::size_t a, std::size_t b) {
    return frames[a]->brightness() < frames[b]->brightness();
  });
  set.reference = byBrightness[frames.size() / 2];
  for (std::size_t i = 0; i < frames.size() && biasVaries(frames); ++i) {
    if (*frames[i]->exposureBias == 0) set.reference = i;
  }
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const double against = frames[set.reference]->brightness();
    set.ev.push_back(rounded(frames[i]->brightness() - against, 100));
    if (i == 0) continue;
    set.steps.push_back(rounded(
        frames[byBrightness[i]]->brightness() - frames[byBrightness[i - 1]]->brightness(), 100));
  }
}

bool isBracket(const BracketSet& set) {
  if (set.frames.size() < 2) return false;
  if (set.frames.front()->automatic || biasVaries(set.frames)) return true;
  double range = 0;
  for (const double step : set.steps) range += step;
  return range >= kLeastRange;
}

template <typename Member>
bool differ(const Frames& frames, Member Shot::*member) {
  return std::any_of(frames.begin(), frames.end(),
                     [&](auto* frame) { return frame->*member != frames.front()->*member; });
}

// The number of frames that most sets have, at least two of them; 0 for none.
std::size_t usualCount(const std::vector<const BracketSet*>& sets) {
  std::map<std::size_t, std::size_t> times;
  for (const BracketSet* set : sets) ++times[set->frames.size()];
  const auto most = std::max_element(times.begin(), times.end(),
                                     [](auto& a, auto& b) { return a.second < b.second; });
  return most->second > 1 ? most->first : 0;
}

void judge(BracketSet& set, std::size_t usual) {
  const std::size_t count = set.frames.size();
  const auto [least, most] = std::minmax_element(set.steps.begin(), set.steps.end());
  const std::string number = std::to_string(count);
  if (usual != 0 && count != usual) {
    set.odd.push_back(number + " frames, where most sets of this camera have " +
                      std::to_string(usual));
  } else if (count % 2 == 0 && usual == 0) {
    set.odd.push_back(number + " frames, an even number");
  }
  if (*most - *least > 2 * kSameExposure) {
    set.odd.emplace_back("its steps are uneven: a frame may be missing, or not belong to it");
  }
  if (differ(set.frames, &Shot::fNumber)) set.odd.emplace_back("the aperture changes");
  if (differ(set.frames, &Shot::iso)) set.odd.emplace_back("the ISO speed changes");
  if (std::all_of(set.frames.begin(), set.frames.end(), [](auto* f) { return f->metered; }) &&
      !biasVaries(set.frames)) {
    set.odd.emplace_back("each exposure was metered, without a bias: the light may have changed");
  }
}

}  // namespace

double Shot::brightness() const {
  const double light = static_cast<double>(exposureTime) * (iso > 0 ? iso : 100);
  const double aperture = fNumber > 0 ? static_cast<double>(fNumber) : 1;
  return std::log2(light / (aperture * aperture));
}

std::optional<Shot> shotOf(const std::string& file, const PhotoReport& report) {
  const ExifInfo& info = report.record.info;
  Shot shot;
  shot.takenText = textOf(info.dateTimeOriginal);
  const std::optional<double> seconds = secondsOf(shot.takenText);
  if (!seconds || !(info.exposureTime > 0) || !std::isfinite(info.exposureTime)) {
    return std::nullopt;
  }
  const std::optional<double> fraction = fractionOf(report.tags.subseconds);
  shot.exact = fraction.has_value();
  shot.taken = *seconds + fraction.value_or(0);
  if (fraction) shot.takenText += "." + report.tags.subseconds;
  shot.file = file;
  shot.make = report.tags.make;
  shot.model = textOf(info.model);
  shot.serialNumber = report.tags.serialNumber;
  shot.lens = report.lens;
  shot.exposureTime = info.exposureTime;
  shot.fNumber = info.fNumber;
  shot.iso = info.iso;
  shot.focalLength = info.focalLength;
  shot.width = report.width;
  shot.height = report.height;
  shot.exposureBias = report.tags.exposureBias;
  shot.automatic = report.tags.exposureMode == 2U;
  shot.metered = report.tags.exposureMode == 0U;
  return shot;
}

std::vector<BracketSet> findBrackets(const std::vector<Shot>& shots, double longestGap) {
  Frames ordered;
  for (const Shot& shot : shots) ordered.push_back(&shot);
  std::sort(ordered.begin(), ordered.end(), [](const Shot* a, const Shot* b) {
    const auto keys = std::pair(keyOf(*a), keyOf(*b));
    return keys.first != keys.second ? keys.first < keys.second : isEarlier(*a, *b);
  });
  std::vector<BracketSet> sets;
  for (const Frames& roll : rollsOf(ordered)) {
    for (Frames& frames : cut(roll, longestGap)) {
      BracketSet set;
      set.frames = std::move(frames);
      measure(set);
      if (isBracket(set)) sets.push_back(std::move(set));
    }
  }
  std::map<decltype(keyOf(shots.front())), std::vector<const BracketSet*>> alike;
  for (const BracketSet& set : sets) alike[keyOf(*set.frames.front())].push_back(&set);
  for (BracketSet& set : sets) judge(set, usualCount(alike[keyOf(*set.frames.front())]));
  std::sort(sets.begin(), sets.end(), [](const BracketSet& a, const BracketSet& b) {
    return isEarlier(*a.frames.front(), *b.frames.front());
  });
  return sets;
}

}  // namespace lfmeta
