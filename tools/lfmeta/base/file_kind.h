// The kinds of file that commands write, known by what a file holds, never by its name.
#pragma once

namespace lfmeta {

enum class FileKind { settingsPacket, tiff, exifBlock, png };

const char* nameOf(FileKind kind);  // "a PNG picture"

// Whether the open file is what a command writes that writes this kind. A raw photograph is no TIFF
// file in this sense, nor a packet with anything but settings a settings packet.
bool isOfKind(int descriptor, FileKind kind);

}  // namespace lfmeta
