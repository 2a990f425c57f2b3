// start-floor: the least a command-line program built like scrivly-cli does to start and answer
// --help: the C++ runtime, ICU and SQLite loaded and touched once, a page of text written. Its
// start-up is the floor of `scrivly-cli --help`.

#include <sqlite3.h>
#include <unicode/ucal.h>
#include <unicode/uversion.h>

#include <iostream>

int main() {
    // One call into each library, so that the linker keeps them and the loader maps them.
    UVersionInfo version{};
    u_getVersion(version);
    const UDate now = ucal_getNow();
    std::cout << "start-floor (ICU " << static_cast<int>(version[0]) << ", SQLite "
              << sqlite3_libversion() << ", " << (now > 0 ? "clock ok" : "no clock") << ")\n"
              << "Usage: start-floor [OPTIONS] COMMAND\n\n"
              << "Options:\n"
              << "  -h,--help          Print this help message and exit\n"
              << "  --database PATH    Read another copy of the database\n"
              << "  --time-zone ZONE   Write dates in this time zone\n"
              << "Commands:\n"
              << "  access  chats  messages  conversations  transcript  export  sample\n";
    return 0;
}
