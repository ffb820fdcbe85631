// The usage text, written for "-h" and when no argument is given.
#include <cstdio>

#include "app/Application.h"

int Application::printUsage()
{
    std::fputs("\n"
               "  corvelcfg\n\tConfigures printer to connect to other wireless devices.\n"
               "\n"
               "  USAGE:\n"
               "        corvelcfg --ssid=\"<SSID>\" --mode=\"[Ad-hoc|Managed]\" "
               "--security=\"[None|WEP|WPA|WPA2|802.1x]\" /\n"
               "        --channel=\"[1-6]\" --passwd=\"<password>\" [USB_PATH]\n"
               "\n"
               "  OPTIONS:\n"
               "      --ssid          Name of the network you want to connect.\n"
               "      --mode          Type of connection.\n"
               "      --security      Security of the network you are connecting.\n"
               "      --channel       Channel of the ad-hoc network you are connecting.\n"
               "      --password      Password of the network if security is equal to None\n"
               "\n"
               "      -h              displays this help.\n"
               "      USB_PATH        path of the usb where the printer you want to configure is connected.\n"
               "\n",
               stdout);
    return 0;
}
