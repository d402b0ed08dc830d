// The files of resources/ that are compiled into the library: the string tables and the images. A program that links
// the library carries them in itself and looks for nothing on disk.
#pragma once

#include <span>
#include <string_view>

// One file. Both views last as long as the program.
struct KREmbeddedFile {
  std::string_view
      path;  // relative to resources/, with '/': "en.lproj/Localizable.strings", "images/pic_trash_logo1.png"
  std::string_view bytes;  // exactly the file's bytes; may be empty
};

// All of them, in byte order of their paths. Never changes; any thread.
std::span<const KREmbeddedFile> krEmbeddedFiles();
