#include "Tests/Client/NameOfTwoAddresses.h"

#include <dlfcn.h>
#include <netdb.h>

#include <string_view>

namespace {

using GetAddrInfo = int (*)(const char*, const char*, const addrinfo*, addrinfo**);

/// The system's own.
GetAddrInfo next() { return reinterpret_cast<GetAddrInfo>(dlsym(RTLD_NEXT, "getaddrinfo")); }

} // namespace

// In the place of the system's, which knows no such name.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* wanted, addrinfo** found) {
    if (name == nullptr || std::string_view(name) != nameOfTwoAddresses)
        return next()(name, service, wanted, found);
    const int failure = next()("127.0.0.2", service, wanted, found);
    return failure != 0 ? failure : next()("127.0.0.1", service, wanted, &(*found)->ai_next);
}
