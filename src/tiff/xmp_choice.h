// Which XMP packet goes into the file: the host's own, or one generated with the settings and the
// lens name.
#pragma once

#include <cstdint>
#include <span>

#include "LumenforgeMetaLib.h"

namespace lumenforge {

struct XmpRequest {
  int32_t method = 0;                 // whose settings are to be written; 0 or less for none
  const float* settings = nullptr;    // a settings record
  const MetadataBuf* meta = nullptr;  // of which the lens name is used
  int32_t lensLength = 0;             // with terminator; 0 for no lens
  int32_t packetLength = 0;           // 0 or less for no packet
  const uint8_t* packet = nullptr;
};

struct XmpChoice {
  uint64_t size = 0;  // 0: the file gets no XMP
  bool generated = false;
};

XmpChoice chooseXmp(const XmpRequest& request);

// `out` is zero-filled and holds `choice.size` bytes.
void writeXmp(const XmpRequest& request, const XmpChoice& choice, std::span<uint8_t> out);

}  // namespace lumenforge
