#include "ScrivlyKit/export/PictureModule.h"

#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace scrivly::PictureModule {

namespace {

// Where the module may be: beside the build that made this program, else where installing puts
// it. Both paths are set by the build.
constexpr const char* kBuilt = SCRIVLY_PICTURES_BUILT;
constexpr const char* kInstalled = SCRIVLY_PICTURES_INSTALLED;

const PictureFunctions* load() {
    std::string reason =
        std::string("the picture module is neither at ") + kBuilt + " nor at " + kInstalled;
    for (const char* path : {kBuilt, kInstalled}) {
        if (::access(path, F_OK) != 0) {
            continue;
        }
        void* module = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            const char* error = ::dlerror();
            reason = error != nullptr ? error : path;
            continue;
        }
        const auto* table =
            static_cast<const PictureFunctions*>(::dlsym(module, kPictureFunctionsSymbol));
        if (table != nullptr && table->version == PictureFunctions::kVersion) {
            return table;
        }
        reason = std::string(path) + " belongs to another version of Scrivly";
        ::dlclose(module);
    }
    // A missing module means a broken installation. Exports still finish, with their pictures
    // listed as files, but a user who expected photos should learn why instead of guessing, and
    // the library has no other way to tell every front end; so one line, once per process.
    std::fprintf(stderr, "Pictures can’t be converted, so they are listed as files (%s).\n",
                 reason.c_str());
    return nullptr;
}

} // namespace

const PictureFunctions* functions() {
    static const PictureFunctions* const table = load();
    return table;
}

} // namespace scrivly::PictureModule
