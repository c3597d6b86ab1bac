#include "api_frame.h"
#include "c_locale.h"
#include "expression_printer.h"

using namespace quarn;

char* q_expression_to_string(q_expression_t expression) {
    return api_call<char*>(nullptr, {expression}, [&] {
        const c_locale_scope in_c_locale;
        return duplicate_string(print(*expression).c_str()).release();
    });
}

void q_string_delete(char* text) {
    api_status({}, [&] { release(text); });
}
