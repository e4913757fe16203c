// Keywords added to IPTC blocks.
#include "fuzzing.h"

namespace fuzz {

void check(Input input) {
  const int keywordLength = input.take<int8_t>();
  const Block keyword(input.bytes(static_cast<std::size_t>(std::max(keywordLength, 0))));
  const int length = keywordLength < 0 ? keywordLength : keyword.size();
  std::string block(input.rest);
  for (int previous = -1, round = 0; round < 2; ++round) {
    const Block iptc(block);
    const Block out(iptc.text().size() + keyword.text().size() + (block.empty() ? 12 : 5));
    const int at =
        add_iptc_keyword(iptc.size(), iptc.bytes(), length, keyword.bytes(), out.bytes());
    if (at < 0) {
      require(length < 0 ? isOneOf(at, {-1, -2}) : at == -1);
      return require(out.text() == std::string(out.text().size(), 'Z'));
    }
    if (block.empty()) block = build::dataset(2, 0, std::string(out.text().substr(5, 2)));
    block.insert(static_cast<std::size_t>(at), build::dataset(2, 25, std::string(keyword.text())));
    require(out.text() == block && at >= previous);
    previous = at;
  }
}

}  // namespace fuzz
