// LFile.cpp -- file helpers and the case-insensitive resolver of resource paths.
#include <ostrum_core/LFile.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace {

bool existsAsWritten(const std::string& path)
{
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

char asciiLower(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsIgnoringCase(const char* a, const std::string& b)
{
    size_t i = 0;
    for (; a[i] != '\0' && i < b.size(); ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i]))
            return false;
    }
    return a[i] == '\0' && i == b.size();
}

// The entry of `dir` ("" meaning the working directory) whose name equals `name` without regard to
// ASCII case; the first by byte order when several do. Empty when none does.
std::string findEntryIgnoringCase(const std::string& dir, const std::string& name)
{
    DIR* d = ::opendir(dir.empty() ? "." : dir.c_str());
    if (d == nullptr)
        return std::string();
    std::string best;
    bool found = false;
    while (struct dirent* entry = ::readdir(d)) {
        if (!equalsIgnoringCase(entry->d_name, name))
            continue;
        if (!found || std::strcmp(entry->d_name, best.c_str()) < 0) {
            best = entry->d_name;
            found = true;
        }
    }
    ::closedir(d);
    return best;
}

size_t lastSeparator(const std::string& name)
{
    return name.find_last_of("/\\");
}

// Index of the dot that starts the extension of the last component, or npos.
size_t extensionDot(const std::string& name)
{
    size_t dot = name.find_last_of('.');
    if (dot == std::string::npos)
        return dot;
    size_t sep = lastSeparator(name);
    if (sep != std::string::npos && sep > dot)
        return std::string::npos;
    return dot;
}

bool isWriteMode(const char* mode)
{
    return std::strchr(mode, 'w') != nullptr || std::strchr(mode, 'a') != nullptr;
}

// Where a file that is written goes: its directory looked up, its name kept as the caller wrote it.
std::string writePath(const std::string& path)
{
    size_t slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return path;
    return LFile::resolvePath(path.substr(0, slash + 1)) + path.substr(slash + 1);
}

}  // namespace

std::string LFile::resolvePath(const std::string& path)
{
    if (path.empty() || existsAsWritten(path))
        return path;

    std::string resolved;
    size_t start = 0;
    if (path[0] == '/') {
        resolved = "/";
        start = 1;
    }
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        std::string component = path.substr(start, end - start);
        const bool last = end == path.size();

        if (!component.empty() && component != "." && component != ".." &&
            !existsAsWritten(resolved + component)) {
            std::string match = findEntryIgnoringCase(resolved, component);
            if (match.empty())
                return path;
            component = match;
        }
        resolved += component;
        if (last)
            break;
        resolved += '/';
        start = end + 1;
    }
    return resolved;
}

std::FILE* LFile::openFile(const std::string& path, const char* mode)
{
    if (mode == nullptr)
        return nullptr;
    return std::fopen((isWriteMode(mode) ? writePath(path) : resolvePath(path)).c_str(), mode);
}

namespace {

bool writeAll(int fd, const void* data, size_t size)
{
    const char* p = static_cast<const char*>(data);
    while (size > 0) {
        ssize_t n = ::write(fd, p, size);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        p += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

mode_t currentUmask()
{
    mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}

}  // namespace

bool LFile::replaceFile(std::string path, const void* data, size_t size)
{
    if (path.empty() || (data == nullptr && size > 0))
        return false;
    const std::string target = writePath(path);
    const std::string existing = resolvePath(path);

    std::string dir;
    std::string name;
    size_t slash = target.find_last_of('/');
    if (slash == std::string::npos) {
        name = target;
    } else {
        dir = target.substr(0, slash + 1);
        name = target.substr(slash + 1);
    }
    if (name.empty())
        return false;

    std::string pattern = dir + "." + name + ".tmp-XXXXXX";
    std::vector<char> buf(pattern.begin(), pattern.end());
    buf.push_back('\0');
    int fd = ::mkstemp(buf.data());
    if (fd < 0)
        return false;
    const std::string temp = buf.data();

    struct stat old;
    mode_t mode = 0666 & ~currentUmask();
    if (::stat(existing.c_str(), &old) == 0 && S_ISREG(old.st_mode))
        mode = old.st_mode & 07777;

    bool ok = writeAll(fd, data, size) && ::fchmod(fd, mode) == 0 && ::fsync(fd) == 0;
    if (::close(fd) != 0)
        ok = false;
    if (ok && ::rename(temp.c_str(), target.c_str()) != 0)
        ok = false;
    if (!ok) {
        ::unlink(temp.c_str());
        return false;
    }
    // The old file under another spelling of the name: the new one has taken its place.
    if (existing != target) {
        struct stat now, before;
        if (::stat(target.c_str(), &now) == 0 && ::lstat(existing.c_str(), &before) == 0 &&
            !S_ISDIR(before.st_mode) && (now.st_dev != before.st_dev || now.st_ino != before.st_ino))
            ::unlink(existing.c_str());
    }
    return true;
}

bool LFile::fileExist(std::string path)
{
    std::FILE* f = openFile(path, "rb");
    if (f == nullptr)
        return false;
    struct stat st;
    bool isFile = ::fstat(::fileno(f), &st) == 0 && !S_ISDIR(st.st_mode);
    std::fclose(f);
    return isFile;
}

bool LFile::del(std::string path)
{
    std::string resolved = resolvePath(path);
    struct stat st;
    if (::lstat(resolved.c_str(), &st) != 0)
        return true;
    if (S_ISDIR(st.st_mode))
        return false;
    return ::unlink(resolved.c_str()) == 0;
}

bool LFile::copy(std::string from, std::string to)
{
    std::FILE* in = openFile(from, "rb");
    if (in == nullptr)
        return false;

    // Opening the target for writing would empty a file copied onto itself.
    struct stat src, dst;
    std::string target = writePath(to);
    if (::fstat(::fileno(in), &src) == 0 && ::stat(target.c_str(), &dst) == 0 && src.st_dev == dst.st_dev &&
        src.st_ino == dst.st_ino) {
        std::fclose(in);
        return true;
    }

    std::FILE* out = openFile(to, "wb");
    if (out == nullptr) {
        std::fclose(in);
        return false;
    }
    bool ok = true;
    std::vector<char> buffer(64 * 1024);
    for (;;) {
        size_t n = std::fread(buffer.data(), 1, buffer.size(), in);
        if (n > 0 && std::fwrite(buffer.data(), 1, n, out) != n) {
            ok = false;
            break;
        }
        if (n < buffer.size()) {
            ok = std::ferror(in) == 0;
            break;
        }
    }
    std::fclose(in);
    if (std::fclose(out) != 0)
        ok = false;
    return ok;
}

void LFile::extractFilenameAndPath(std::string full, std::string& filename, std::string& path)
{
    size_t sep = lastSeparator(full);
    if (sep == std::string::npos) {
        filename = full;
        path.clear();
        return;
    }
    filename = full.substr(sep + 1);
    path = full.substr(0, sep + 1);
}

std::string LFile::getFileExtension(std::string name)
{
    size_t dot = extensionDot(name);
    if (dot == std::string::npos)
        return std::string();
    return name.substr(dot + 1);
}

std::string LFile::getFilenameWithoutExtension(std::string name)
{
    size_t dot = extensionDot(name);
    if (dot == std::string::npos)
        return name;
    return name.substr(0, dot);
}
