// Keywords added to IPTC blocks, one behind the other.
#include "fuzzing.h"

void fuzz::check(std::string input) {
  const std::string keyword(take<uint8_t>(input), 'k');
  const Block text(keyword);
  for (int previous = 0, round = 0; round < 3; ++round) {
    const Block iptc(input);
    if (input.empty()) input = dataset(2, 0, "\0\2"s);
    const Block out(std::string(input.size() + 5 + keyword.size(), 'Z'));
    const int at = add_iptc_keyword(iptc.size(), iptc.bytes(), text.size(), text.bytes(), out.bytes());
    if (at < 0) return require(at == -1 && out.untouched());
    input.insert(static_cast<std::size_t>(at), dataset(2, 25, keyword));
    require(out.text() == input && at >= previous);
    previous = at;
  }
}
