// The USB bus of a private PC/SC daemon: the functions of libudev that the daemon's hotplug code calls,
// loaded before the real ones.
//
// A daemon of its own configuration file can only start readers, never lose one. Readers on a USB bus come
// and go while it runs; so the daemon is shown a bus. Its devices are the files in the directory "plugged"
// under MVX2_SIM_DIR: making a file plugs a reader in, removing it pulls the reader out.
#include <sys/inotify.h>

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

struct udev {};

struct udev_list_entry {
  std::string path;
  udev_list_entry* next = nullptr;
};

struct udev_enumerate {
  std::vector<udev_list_entry> entries;
};

struct udev_device {
  std::string name;
  std::string node;
  const char* action;
};

struct udev_monitor {
  int descriptor = -1;
};

namespace {

udev bus;

std::string directory() {
  const char* const home = std::getenv("MVX2_SIM_DIR");
  return std::string(home == nullptr ? "" : home) + "/plugged";
}

udev_device* makeDevice(const std::string& name, const char* action) {
  return new udev_device{name, "/dev/mvx2-sim/" + name, action};
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

udev* udev_new() { return &bus; }

udev* udev_unref(udev* /*udev*/) { return nullptr; }

udev_enumerate* udev_enumerate_new(udev* /*udev*/) { return new udev_enumerate; }

udev_enumerate* udev_enumerate_unref(udev_enumerate* enumerate) {
  delete enumerate;
  return nullptr;
}

int udev_enumerate_add_match_subsystem(udev_enumerate* /*enumerate*/, const char* /*subsystem*/) { return 0; }

int udev_enumerate_scan_devices(udev_enumerate* enumerate) {
  DIR* const plugged = opendir(directory().c_str());
  if (plugged == nullptr) return -1;
  while (const dirent* const file = readdir(plugged))
    if (file->d_name[0] != '.') enumerate->entries.push_back({directory() + "/" + file->d_name});
  closedir(plugged);
  // The daemon lists the readers in this order, the same every time.
  std::sort(enumerate->entries.begin(), enumerate->entries.end(),
            [](const udev_list_entry& a, const udev_list_entry& b) { return a.path < b.path; });
  for (std::size_t i = 1; i < enumerate->entries.size(); ++i)
    enumerate->entries[i - 1].next = &enumerate->entries[i];
  return 0;
}

udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* enumerate) {
  return enumerate->entries.empty() ? nullptr : &enumerate->entries.front();
}

udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry) { return entry->next; }

const char* udev_list_entry_get_name(udev_list_entry* entry) { return entry->path.c_str(); }

udev_device* udev_device_new_from_syspath(udev* /*udev*/, const char* path) {
  const std::string text = path;
  return makeDevice(text.substr(text.rfind('/') + 1), nullptr);
}

udev_device* udev_device_unref(udev_device* device) {
  delete device;
  return nullptr;
}

// A device is its own only interface.
udev_device* udev_device_get_parent_with_subsystem_devtype(udev_device* device, const char* /*subsystem*/,
                                                           const char* /*type*/) {
  return device;
}

const char* udev_device_get_devnode(udev_device* device) { return device->node.c_str(); }

const char* udev_device_get_sysname(udev_device* device) { return device->name.c_str(); }

const char* udev_device_get_action(udev_device* device) { return device->action; }

// The two numbers by which the daemon finds the driver of a device.
const char* udev_device_get_sysattr_value(udev_device* device, const char* attribute) {
  if (std::strcmp(attribute, "idVendor") == 0) return "f0f0";
  if (std::strcmp(attribute, "idProduct") == 0) return device->name == "terminal" ? "0001" : "0002";
  return nullptr;
}

udev_monitor* udev_monitor_new_from_netlink(udev* /*udev*/, const char* /*name*/) {
  return new udev_monitor{inotify_init1(IN_CLOEXEC | IN_NONBLOCK)};
}

int udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* /*monitor*/, const char* /*subsystem*/,
                                                    const char* /*type*/) {
  return 0;
}

int udev_monitor_enable_receiving(udev_monitor* monitor) {
  return inotify_add_watch(monitor->descriptor, directory().c_str(), IN_CREATE | IN_DELETE) < 0 ? -1 : 0;
}

int udev_monitor_get_fd(udev_monitor* monitor) { return monitor->descriptor; }

udev_device* udev_monitor_receive_device(udev_monitor* monitor) {
  // Room for exactly one event with a name of up to 15 characters: the daemon takes one device for each time
  // that the descriptor is ready.
  alignas(inotify_event) char buffer[sizeof(inotify_event) + 16];
  if (read(monitor->descriptor, buffer, sizeof buffer) < static_cast<ssize_t>(sizeof buffer)) return nullptr;
  inotify_event event{};
  std::memcpy(&event, buffer, sizeof event);
  buffer[sizeof buffer - 1] = '\0';
  return makeDevice(buffer + sizeof event, (event.mask & IN_CREATE) != 0 ? "add" : "remove");
}

}  // extern "C"
#pragma GCC visibility pop
