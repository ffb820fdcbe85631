// Prints the udev properties of every device of subsystem "usb" as libudev
// sees them (under corvelsim: the simulated printer's USB device and its
// interfaces), for the udev rule's test: a "device SYSPATH" line, then one
// KEY=VALUE line per property, then an empty line.
#include <libudev.h>

#include <cstdio>

int main()
{
    udev* context = udev_new();
    if (context == nullptr) return 1;
    udev_enumerate* enumerate = udev_enumerate_new(context);
    udev_enumerate_add_match_subsystem(enumerate, "usb");
    udev_enumerate_scan_devices(enumerate);
    udev_list_entry* entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate))
    {
        udev_device* device = udev_device_new_from_syspath(context, udev_list_entry_get_name(entry));
        if (device == nullptr) continue;
        std::printf("device %s\n", udev_device_get_syspath(device));
        udev_list_entry* property;
        udev_list_entry_foreach(property, udev_device_get_properties_list_entry(device))
        {
            std::printf("%s=%s\n", udev_list_entry_get_name(property), udev_list_entry_get_value(property));
        }
        std::printf("\n");
        udev_device_unref(device);
    }
    udev_enumerate_unref(enumerate);
    udev_unref(context);
    return 0;
}
