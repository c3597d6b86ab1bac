#include "c_locale.h"

#include <clocale>
#include <cstring>

#include "errors.h"

namespace quarn {

c_locale_scope::c_locale_scope() {
    const char* present = std::setlocale(LC_ALL, nullptr);
    require(present != nullptr, q_error_locale);
    if (std::strcmp(present, "C") == 0 || std::strcmp(present, "POSIX") == 0) return;
    text saved = duplicate_string(present);  // the next call overwrites what `present` points to
    require(std::setlocale(LC_ALL, "C") != nullptr, q_error_locale);
    saved_ = std::move(saved);
}

c_locale_scope::~c_locale_scope() {
    if (saved_) std::setlocale(LC_ALL, saved_.get());
}

}  // namespace quarn
