// LFile.h -- static file helpers (existence, delete, copy, name splitting) and the case-insensitive
// resolution of resource paths that every open of a resource file goes through.
//
// Resource names are often written on a case-insensitive file system ("IMAGE1.JPG" in a data file for
// a file called "image1.jpg"). resolvePath finds the file that such a name means; fileExist, del, copy
// and openFile all go through it, and the rest of the library opens resource files with openFile.
//
// Choices recorded here:
//  - resolvePath returns a path that exists as written unchanged. Otherwise it walks the path from the
//    front, keeps every component that exists as written, and looks a missing one up in its directory
//    comparing ASCII letters without case (other bytes must match exactly). When several entries
//    match, the one that sorts first by byte value is taken, so the result does not depend on the
//    order of the directory listing. When a component has no match, the path comes back as written.
//    Only '/' separates components here; a backslash is an ordinary character of a name.
//  - openFile with a mode that writes ('w' or 'a') resolves the directory part only and keeps the file
//    name as written, so a new file gets exactly the name the caller gave; "r+" opens an existing
//    file and resolves the whole path.
//  - fileExist is true for something that can be opened for reading and is not a directory.
//  - del removes files only (never a directory); a missing file is not an error. copy replaces `to`;
//    copying a file onto itself leaves it untouched. Both also report success as a bool, which callers
//    may ignore.
//  - extractFilenameAndPath, getFileExtension and getFilenameWithoutExtension treat both '/' and '\\'
//    as separators and never change a name's letter case. The directory part keeps its trailing
//    separator, so path + filename gives back the full text ("data/tree.3ds" -> "tree.3ds" and
//    "data/"); a name without a separator gives an empty directory part.
//  - getFileExtension and getFilenameWithoutExtension only look for the dot in the last component:
//    "maps.v2/height" has no extension. getFilenameWithoutExtension keeps the directory part
//    ("maps/h.bmp" -> "maps/h").
//  - replaceFile never leaves a half-written file under the target's name: the bytes go to a new
//    temporary file in the target's own directory, named "." + file name + ".tmp-" + six random
//    characters (made with mkstemp, so never an existing file), which is flushed to the disk and only
//    then renamed over the target. On any failure (a full disk, a read-only directory, a directory
//    that does not exist) the temporary file is removed and the old file is left as it was. The new
//    file takes the permission bits of the file it replaces, or 0666 less the umask when there was
//    none. Its name is the one the caller wrote; an existing file that the name reaches only through
//    case-insensitive resolution is removed once the new file is in place, so exactly one file is
//    left, under the new name, as a delete followed by a write would leave it.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

class LFile {
public:
    // True when the file exists (after case-insensitive resolution) and can be opened for reading.
    static bool fileExist(std::string path);
    // Deletes the file; a missing file is not an error (the result is then true as well).
    static bool del(std::string path);
    // Copies `from` to `to`, replacing `to`; false when `from` cannot be read or `to` written.
    static bool copy(std::string from, std::string to);
    // "dir/sub/name.ext" -> filename "name.ext", path "dir/sub/".
    static void extractFilenameAndPath(std::string full, std::string& filename, std::string& path);
    // Text after the last dot of the file name, letter case unchanged; empty when there is no dot.
    static std::string getFileExtension(std::string name);
    // The name without its last dot and extension; the directory part is kept.
    static std::string getFilenameWithoutExtension(std::string name);

    // The path of the file that `path` means on this file system (see the header comment).
    static std::string resolvePath(const std::string& path);
    // std::fopen through resolvePath; write modes resolve the directory part and keep the file name.
    static std::FILE* openFile(const std::string& path, const char* mode);
    // Replaces the file at `path` with `size` bytes, all or nothing (see the header comment); false
    // when the new file could not be written whole, in which case the old file is untouched.
    static bool replaceFile(std::string path, const void* data, size_t size);
};
