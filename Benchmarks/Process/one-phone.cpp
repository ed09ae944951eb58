// one-phone: stands in for adb where none is staged. One phone is attached, whatever it is asked.
#include <cstdio>
#include <cstring>

int main(int argc, char *argv[])
{
    const bool log = argc > 3 && std::strcmp(argv[3], "logcat") == 0;
    if (!log)
        std::puts(
            "List of devices attached\n"
            "R58M42ABCDE            device usb:1-4 product:beyond1 model:SM_G973F device:beyond1 transport_id:3\n");
    for (int line = 0; log && line < 350; ++line)
        std::printf("11-21 03:14:15.%03d  5358  9793 I ActivityTaskManager: Displayed com.example.app in %d ms\n", line,
                    line);
    return 0;
}
