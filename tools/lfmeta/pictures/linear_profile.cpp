#include "pictures/linear_profile.h"

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace lfmeta {

namespace {

using namespace std::string_view_literals;

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;  // rows

constexpr Vector kD50{0.9642, 1.0, 0.8249};
constexpr Matrix kBradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

Vector product(const Matrix& m, const Vector& v) {
  Vector out{};
  for (std::size_t i = 0; i < 3; ++i) out[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
  return out;
}

// By cofactors; not finite for a singular matrix.
Matrix inverse(const Matrix& m) {
  Matrix out{};
  double determinant = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const Vector& a = m[(j + 1) % 3];
      const Vector& b = m[(j + 2) % 3];
      out[i][j] = a[(i + 1) % 3] * b[(i + 2) % 3] - a[(i + 2) % 3] * b[(i + 1) % 3];
    }
    determinant += m[0][i] * out[i][0];
  }
  for (Vector& row : out) {
    for (double& value : row) value /= determinant;
  }
  return out;
}

// Of luminance 1.
Vector tristimulus(const Chromaticity& color) {
  return {color.x / color.y, 1, (1 - color.x - color.y) / color.y};
}

void addNumber(std::string& out, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>(value >> shift & 0xFF);
}

std::string xyz(const Vector& color) {
  std::string out("XYZ \0\0\0\0"sv);
  for (const double value : color) {
    addNumber(out, static_cast<uint32_t>(static_cast<int32_t>(std::lround(value * 65536))));
  }
  return out;
}

// The profile's own description, in plain ASCII and neither in Unicode nor for a script.
std::string description(std::string_view text) {
  constexpr std::size_t kOtherForms = 4 + 4 + 2 + 1 + 67;
  std::string out("desc\0\0\0\0"sv);
  addNumber(out, static_cast<uint32_t>(text.size() + 1));
  return out.append(text).append(1 + kOtherForms, '\0');
}

struct Tag {
  std::string_view name;
  std::string data;
};

Bytes profileOf(const std::array<Vector, 3>& primaries) {
  constexpr std::size_t kHeaderSize = 128;
  const std::string curve("curv\0\0\0\0\0\0\0\0"sv);  // of no entries: the identity
  std::array<Tag, 9> tags{{{"desc", description("Linear RGB")},
                           {"cprt", std::string("text\0\0\0\0No copyright\0"sv)},
                           {"wtpt", xyz(kD50)},
                           {"rXYZ", xyz(primaries[0])},
                           {"gXYZ", xyz(primaries[1])},
                           {"bXYZ", xyz(primaries[2])},
                           {"rTRC", curve},
                           {"gTRC", curve},
                           {"bTRC", curve}}};
  std::string table;
  std::string data;
  addNumber(table, static_cast<uint32_t>(tags.size()));
  const std::size_t start = kHeaderSize + 4 + 12 * tags.size();
  for (Tag& tag : tags) {
    table += tag.name;
    addNumber(table, static_cast<uint32_t>(start + data.size()));
    addNumber(table, static_cast<uint32_t>(tag.data.size()));
    data += tag.data;
    data.resize((data.size() + 3) / 4 * 4);
  }
  std::string profile;
  addNumber(profile, static_cast<uint32_t>(start + data.size()));
  profile += "\0\0\0\0\x02\x10\0\0mntrRGB XYZ \x07\xE8\0\x01\0\x01\0\0\0\0\0\0acsp"sv;
  profile.resize(68);
  profile += xyz(kD50).substr(8);
  profile.resize(kHeaderSize);
  profile += table + data;
  return {profile.begin(), profile.end()};
}

}  // namespace

Bytes linearProfile(const std::array<Chromaticity, 4>& colors) {
  Matrix primaries{};  // their columns, of luminance 1
  for (std::size_t i = 0; i < 3; ++i) {
    const Vector color = tristimulus(colors[i]);
    for (std::size_t row = 0; row < 3; ++row) primaries[row][i] = color[row];
  }
  const Vector white = tristimulus(colors[3]);
  const Vector luminances = product(inverse(primaries), white);
  const Vector from = product(kBradford, white);
  const Vector to = product(kBradford, kD50);
  const Matrix back = inverse(kBradford);

  std::array<Vector, 3> adapted{};
  for (std::size_t i = 0; i < 3; ++i) {
    Vector color{};
    for (std::size_t row = 0; row < 3; ++row) color[row] = primaries[row][i] * luminances[i];
    Vector cone = product(kBradford, color);
    for (std::size_t j = 0; j < 3; ++j) cone[j] *= to[j] / from[j];
    adapted[i] = product(back, cone);
    for (const double value : adapted[i]) {
      if (!(std::fabs(value) < 32767)) return {};
    }
  }
  return profileOf(adapted);
}

}  // namespace lfmeta
