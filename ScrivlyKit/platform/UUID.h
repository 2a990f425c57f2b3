#pragma once

#include <string>

namespace scrivly {

// A random version-4 UUID in canonical upper-case form ("8-4-4-4-12" hexadecimal digits), drawn
// from the standard library's random device; suitable for names nobody else will choose.
std::string randomUUID();

} // namespace scrivly
