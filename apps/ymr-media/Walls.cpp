#include "apps/ymr-media/Walls.h"

#include <fcntl.h>
#include <glob.h>
#include <gst/gst.h>
#include <link.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>

#include "platform/avfoundation/bytes/SharedMemory.h"

namespace {

// Addresses, not memory: every thread's heap and stack reserves a hundred times what it uses.
constexpr rlim_t memoryLimit = 6ull << 30;
constexpr rlim_t descriptorsLimit = 512;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isChecked = true;  // checkers need all the addresses there are
#else
constexpr bool isChecked = false;
#endif

void complain(const char* what) {
  std::fprintf(stderr, "ymr-media: %s: %s\n", what, std::strerror(errno));
}

void limit(decltype(RLIMIT_AS) resource, rlim_t value) {
  rlimit bound{};
  getrlimit(resource, &bound);
  if (bound.rlim_max != RLIM_INFINITY && bound.rlim_max < value) value = bound.rlim_max;
  bound = {value, value};
  setrlimit(resource, &bound);
}

// What each version of the kernel's interface knows of, one bit a right.
constexpr std::uint64_t readRights =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t deviceRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE;

std::uint64_t rightsOf(long version) {
  std::uint64_t rights = (1ull << 13) - 1;
  for (long known = 2; known <= version && known <= 3; ++known) rights |= 1ull << (11 + known);  // moving, cutting
  return rights;  // a device's own commands are left to the devices that may be opened
}

class Landlock {
 public:
  explicit Landlock(long version) {
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = rightsOf(version);
    rules_ = Descriptor(static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
  }

  void allow(const std::string& path, std::uint64_t rights) {
    const Descriptor place(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (place) allow(place.get(), rights);
  }
  void allow(int place, std::uint64_t rights) {
    struct stat status {};
    if (fstat(place, &status) != 0) return;
    landlock_path_beneath_attr rule{};
    rule.parent_fd = place;
    rule.allowed_access = S_ISDIR(status.st_mode) ? rights : rights & ~LANDLOCK_ACCESS_FS_READ_DIR;
    syscall(SYS_landlock_add_rule, rules_.get(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
  }
  bool raise() const { return rules_ && syscall(SYS_landlock_restrict_self, rules_.get(), 0) == 0; }

 private:
  Descriptor rules_;
};

// Where the libraries lie that are loaded, and those that may have to be yet.
std::set<std::string> libraryFolders() {
  std::set<std::string> folders{"/usr/lib", "/lib", "/lib64", "/usr/lib64"};
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* data) {
        const std::filesystem::path path = info->dlpi_name;
        if (path.is_absolute()) static_cast<std::set<std::string>*>(data)->insert(path.parent_path());
        return 0;
      },
      &folders);
  GList* plugins = gst_registry_get_plugin_list(gst_registry_get());
  for (GList* plugin = plugins; plugin; plugin = plugin->next) {
    const gchar* file = gst_plugin_get_filename(GST_PLUGIN(plugin->data));
    if (file) folders.insert(std::filesystem::path(file).parent_path());
  }
  gst_plugin_list_free(plugins);
  return folders;
}

void allowSystem(Landlock& landlock, bool isNetworkAllowed) {
  for (const std::string& folder : libraryFolders()) landlock.allow(folder, readRights);
  // What sound is configured by, and the list of libraries.
  for (const char* path :
       {"/etc/ld.so.cache", "/etc/alsa", "/etc/asound.conf", "/etc/pulse", "/etc/pipewire", "/etc/machine-id",
        "/usr/share/alsa", "/usr/share/pipewire", "/usr/share/drirc.d", "/usr/share/zoneinfo", "/etc/localtime",
        "/sys/devices", "/sys/class", "/sys/dev", "/proc/cpuinfo", "/proc/meminfo", "/proc/asound"}) {
    landlock.allow(path, readRights & ~LANDLOCK_ACCESS_FS_EXECUTE);
  }
  if (const char* home = std::getenv("HOME")) {
    for (const char* file : {"/.asoundrc", "/.config/pulse", "/.config/pipewire", "/.pulse-cookie"}) {
      landlock.allow(std::string(home) + file, readRights & ~LANDLOCK_ACCESS_FS_EXECUTE);
    }
  }
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR")) {
    landlock.allow(std::string(runtime) + "/pulse", deviceRights | LANDLOCK_ACCESS_FS_READ_DIR);
  }
  for (const char* path : {"/dev/null", "/dev/zero", "/dev/urandom", "/dev/snd", "/dev/dri"}) {
    landlock.allow(path, deviceRights | LANDLOCK_ACCESS_FS_READ_DIR);
  }
  glob_t devices{};
  for (const char* pattern : {"/dev/video*", "/dev/media*"}) {
    if (glob(pattern, 0, nullptr, &devices) == 0) {
      for (std::size_t i = 0; i < devices.gl_pathc; ++i) landlock.allow(devices.gl_pathv[i], deviceRights);
    }
    globfree(&devices);
  }
  if (!isNetworkAllowed) return;
  for (const char* path :
       {"/etc/resolv.conf", "/run/systemd/resolve", "/run/resolvconf", "/etc/hosts", "/etc/nsswitch.conf",
        "/etc/host.conf", "/etc/gai.conf", "/etc/services", "/etc/ssl", "/usr/share/ca-certificates",
        "/usr/local/share/ca-certificates", "/etc/ca-certificates", "/usr/share/glib-2.0", "/usr/share/publicsuffix"}) {
    landlock.allow(path, readRights & ~LANDLOCK_ACCESS_FS_EXECUTE);
  }
}

void raiseFileWall(const std::vector<int>& files, bool isNetworkAllowed) {
  const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (version < 1) return;  // a kernel without it
  Landlock landlock(version);
  allowSystem(landlock, isNetworkAllowed);
  for (const int file : files) {
    struct stat status {};
    if (fstat(file, &status) == 0 && !S_ISDIR(status.st_mode)) landlock.allow(file, LANDLOCK_ACCESS_FS_READ_FILE);
  }
  if (!landlock.raise()) complain("files are not walled off");
}

void raiseCallWall(bool isNetworkAllowed, bool isSoundWanted) {
  scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  if (!filter) return complain("calls are not walled off");
  const auto refuse = [filter](int call, int error) { seccomp_rule_add(filter, SCMP_ACT_ERRNO(error), call, 0); };
  for (const int call : {SCMP_SYS(execve),
                         SCMP_SYS(execveat),
                         SCMP_SYS(fork),
                         SCMP_SYS(vfork),
                         SCMP_SYS(ptrace),
                         SCMP_SYS(process_vm_readv),
                         SCMP_SYS(process_vm_writev),
                         SCMP_SYS(pidfd_getfd),
                         SCMP_SYS(kcmp),
                         SCMP_SYS(bpf),
                         SCMP_SYS(perf_event_open),
                         SCMP_SYS(userfaultfd),
                         SCMP_SYS(io_uring_setup),
                         SCMP_SYS(keyctl),
                         SCMP_SYS(add_key),
                         SCMP_SYS(request_key),
                         SCMP_SYS(mount),
                         SCMP_SYS(umount2),
                         SCMP_SYS(pivot_root),
                         SCMP_SYS(chroot),
                         SCMP_SYS(setns),
                         SCMP_SYS(unshare),
                         SCMP_SYS(init_module),
                         SCMP_SYS(finit_module),
                         SCMP_SYS(kexec_load),
                         SCMP_SYS(open_by_handle_at)}) {
    refuse(call, EPERM);
  }
  // Threads are made by the older call, whose flags can be seen.
  refuse(SCMP_SYS(clone3), ENOSYS);
  seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(clone), 1, SCMP_A0(SCMP_CMP_MASKED_EQ, 0x10000, 0));
  // A signal to anybody but oneself, or somebody else's limits.
  for (const int call : {SCMP_SYS(tkill), SCMP_SYS(rt_sigqueueinfo), SCMP_SYS(rt_tgsigqueueinfo), SCMP_SYS(pidfd_open),
                         SCMP_SYS(pidfd_send_signal)}) {
    refuse(call, EPERM);
  }
  for (const int call : {SCMP_SYS(kill), SCMP_SYS(tgkill)}) {
    seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 1, SCMP_A0(SCMP_CMP_NE, static_cast<scmp_datum_t>(getpid())));
  }
  seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(prlimit64), 1, SCMP_A0(SCMP_CMP_NE, 0));
  // Keys typed into the host's terminal.
  for (const scmp_datum_t typing : {TIOCSTI, TIOCLINUX}) {
    seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), SCMP_SYS(ioctl), 1,
                     SCMP_A1(SCMP_CMP_MASKED_EQ, 0xFFFFFFFF, typing));
  }
  if (!isNetworkAllowed && !isSoundWanted) {
    refuse(SCMP_SYS(socket), EACCES);
  } else if (!isNetworkAllowed) {
    seccomp_rule_add(filter, SCMP_ACT_ERRNO(EACCES), SCMP_SYS(socket), 1, SCMP_A0(SCMP_CMP_NE, AF_UNIX));
  }
  if (seccomp_load(filter) != 0) complain("calls are not walled off");
  seccomp_release(filter);
}

}  // namespace

void raiseLimits() {
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);  // one that is stopped does not see its socket end
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_NOFILE, descriptorsLimit);
  if (!isChecked) limit(RLIMIT_AS, memoryLimit);
}

void raiseWalls(const std::vector<int>& files, bool isNetworkAllowed, bool isSoundWanted) {
  raiseFileWall(files, isNetworkAllowed);
  raiseCallWall(isNetworkAllowed, isSoundWanted);
}
