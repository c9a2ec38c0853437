#include "platform/posix/PipePlace.h"

#include "platform/posix/LastError.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace pavo::posix {
namespace {

constexpr char kPipePrefix[] = R"(\\.\pipe\)";
constexpr std::size_t kPipePrefixLength = sizeof kPipePrefix - 1;

// What sun_path leaves beside "/proc/self/fd/2147483647/" and the final zero.
constexpr std::size_t kLongestFile = sizeof(sockaddr_un::sun_path) - 26;

std::string runtimeFolderPath()
{
    const char* base = std::getenv("XDG_RUNTIME_DIR");
    if (base && base[0] == '/')
        return std::string(base) + "/pavo";
    return "/tmp/pavo-" + std::to_string(geteuid());
}

// 64-bit FNV-1a: the same in every build, as both ends of a pipe have to agree.
std::string digest(const std::string& text)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    char digits[17];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return digits;
}

// Pipe names are equal whatever their case, may hold what a file name may not, and are longer than
// the address of a socket may be.
std::string fileOfName(const char* name)
{
    std::string file;
    for (const char* at = name; *at; ++at) {
        const char c = *at >= 'A' && *at <= 'Z' ? static_cast<char>(*at - 'A' + 'a') : *at;
        const bool plain = c != '/' && c != '%' && c != '~' && (c != '.' || at != name);
        if (plain) {
            file += c;
        } else {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02x", static_cast<unsigned char>(c));
            file += escape;
        }
    }
    // No escaped name begins with a tilde.
    return file.size() <= kLongestFile ? file : "~" + digest(file);
}

} // namespace

DWORD openRuntimeFolder(UniqueFd& folder)
{
    const std::string path = runtimeFolderPath();
    const auto openFolder = [&] {
        return UniqueFd(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    };
    folder = openFolder();
    if (!folder && errno == ENOENT) {
        if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST)
            return errorFromErrno(errno);
        folder = openFolder();
    }
    if (!folder)
        return errno == ENOTDIR ? ERROR_ACCESS_DENIED : errorFromErrno(errno);
    struct stat status = {};
    if (fstat(folder.get(), &status) != 0)
        return errorFromErrno(errno);
    const bool ours = status.st_uid == geteuid() && (status.st_mode & 0077U) == 0;
    return ours ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

DWORD PipePlace::find(LPCSTR name, PipePlace& place)
{
    if (!name || !*name)
        return ERROR_PATH_NOT_FOUND;
    const DWORD error = *name == '/' ? place.findByPath(name) : place.findByName(name);
    if (error != ERROR_SUCCESS)
        return error;
    struct stat status = {};
    if (fstat(place.m_folder.get(), &status) != 0)
        return errorFromErrno(errno);
    place.m_id =
        std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino) + '/' + place.m_file;
    return ERROR_SUCCESS;
}

DWORD PipePlace::findByName(const char* name)
{
    if (strncasecmp(name, kPipePrefix, kPipePrefixLength) == 0)
        name += kPipePrefixLength;
    m_file = fileOfName(name);
    return m_file.empty() ? ERROR_INVALID_NAME : openRuntimeFolder(m_folder);
}

DWORD PipePlace::findByPath(const char* path)
{
    const char* file = std::strrchr(path, '/') + 1;
    m_file = file;
    if (m_file.empty() || m_file.size() > kLongestFile)
        return ERROR_INVALID_NAME;
    m_folder = UniqueFd(open(std::string(path, file).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return m_folder ? ERROR_SUCCESS : errorFromErrno(errno);
}

sockaddr_un PipePlace::address() const
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", m_folder.get(),
                  m_file.c_str());
    return address;
}

} // namespace pavo::posix
