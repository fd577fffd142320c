// FileFailureSupport.h -- ways for tests to make file writes fail as a full disk or a read-only
// directory would, also when the tests run as root.
#pragma once

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>

namespace ostrum_test {

// While it lives, no file of this process may grow beyond `bytes` bytes: a write past that fails with
// EFBIG, as a write to a full disk fails with ENOSPC (the signal such a write raises is ignored).
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        savedHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &saved_);
        struct rlimit limit = saved_;
        limit.rlim_cur = bytes;
        active_ = ::setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, savedHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    bool active() const { return active_; }

private:
    struct rlimit saved_ {};
    void (*savedHandler_)(int) = SIG_DFL;
    bool active_ = false;
};

// Makes `dir` readable and searchable by everyone and writable by no one.
inline bool makeDirectoryReadOnly(const std::string& dir)
{
    return ::chmod(dir.c_str(), 0555) == 0;
}

inline bool makeDirectoryWritable(const std::string& dir)
{
    return ::chmod(dir.c_str(), 0755) == 0;
}

// For a child process (a death-test statement): root ignores directory permissions, so a process
// running as root becomes the user "nobody" first. False when that fails.
inline bool dropRootPrivileges()
{
    if (::geteuid() != 0)
        return true;
    if (::setgroups(0, nullptr) != 0)
        return false;
    if (::setgid(65534) != 0 || ::setuid(65534) != 0)
        return false;
    return ::geteuid() != 0;
}

}  // namespace ostrum_test
