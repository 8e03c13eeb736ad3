#include "sandbox.h"

#include "Failure.h"
#include "places.h"

#include <sys/auxv.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace mvx2sim {

namespace {

namespace fs = std::filesystem;

void writeFile(const fs::path& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  if (!file) throw systemFailure("cannot write " + path.string());
}

std::string identityMap(unsigned id) {
  const std::string number = std::to_string(id);
  return number + " " + number + " 1";
}

void unshareAsUser() {
  const uid_t user = getuid();
  const gid_t group = getgid();
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
    throw systemFailure(
        "cannot make mounts of its own. As a normal user this needs user namespaces, which the system "
        "forbids "
        "(sysctl kernel.unprivileged_userns_clone=1, user.max_user_namespaces, or run mvx2-sim as root)");
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", identityMap(user));
  writeFile("/proc/self/gid_map", identityMap(group));
}

void mountMemory(const char* where) {
  if (mount("mvx2-sim", where, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") != 0)
    throw systemFailure(std::string("cannot mount a file system on ") + where);
}

// In a chroot whose root is no mount point the mount that holds it cannot be named; what is mounted below it
// stays inside the chroot all the same.
void keepMountsPrivate() {
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 && errno != EINVAL)
    throw systemFailure("cannot make the mounts private");
}

// The directory of this program's modules: it lies at the same place beside bin/ when built and when
// installed. It is found before anything is mounted, and without /proc, which a chroot may lack.
const fs::path module_directory = [] {
  std::error_code error;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the auxiliary vector holds addresses as numbers
  const fs::path program = fs::canonical(reinterpret_cast<const char*>(getauxval(AT_EXECFN)), error);
  return (program.parent_path() / MVX2_SIM_MODULES).lexically_normal();
}();

void copyModule(const std::string& name, const fs::path& destination) {
  const fs::path source = module_directory / name;
  std::error_code error;
  fs::copy_file(source, destination, error);
  if (error) throw Failure("cannot copy " + source.string() + ": " + error.message());
}

// The daemon tells drivers apart by their path and readers of one driver by a number in their name: each
// reader has a driver file of its own, so that both names end in " 00 00".
void furnishReader(const std::string& device, const std::string& name, const std::string& product) {
  const fs::path contents = fs::path(places::drivers) / (device + ".bundle") / "Contents";
  fs::create_directories(contents / "Linux");
  copyModule("mvx2_sim_driver.so", contents / "Linux" / "driver.so");
  std::ostringstream list;
  const auto entry = [&list](const char* key, const std::string& value) {
    list << "<key>" << key << "</key>\n<string>" << value << "</string>\n";
  };
  entry("CFBundleExecutable", "driver.so");
  entry("ifdVendorID", "0xf0f0");
  entry("ifdProductID", product);
  entry("ifdFriendlyName", name);
  writeFile(contents / "Info.plist", list.str());
  writeFile(fs::path(places::names) / device, name);
  writeFile(fs::path(places::plugged) / device, "");
}

}  // namespace

void enterSandbox() {
  if (unshare(CLONE_NEWNS) != 0) {
    if (errno != EPERM) throw systemFailure("cannot make mounts of its own");
    unshareAsUser();
  }
  keepMountsPrivate();
  // The daemon's directory may be missing where no daemon was ever started; making it would change the
  // machine.
  if (fs::is_directory(places::daemon_run)) {
    mountMemory(places::daemon_run);
  } else {
    mountMemory(places::run);
    fs::create_directory(places::daemon_run);
  }
}

void furnish(const Settings& settings) {
  for (const char* directory : {places::home, places::plugged, places::names, places::drivers})
    fs::create_directory(directory);
  writeFile(places::configuration, "");
  copyModule("mvx2_sim_usb.so", places::usb);
  if (settings.terminal) furnishReader("terminal", settings.terminalName, "0x0001");
  if (settings.sam) furnishReader("sam", settings.samName, "0x0002");
}

void mountDrivers() {
  if (unshare(CLONE_NEWNS) != 0) throw systemFailure("cannot make mounts for the daemon");
  keepMountsPrivate();
  if (mount(places::drivers, places::daemon_drivers, nullptr, MS_BIND, nullptr) != 0)
    throw systemFailure(std::string("cannot mount the drivers on ") + places::daemon_drivers);
}

}  // namespace mvx2sim
