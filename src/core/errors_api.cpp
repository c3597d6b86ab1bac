#include "errors.h"

using namespace quarn;

q_error_t q_error_code(void) { return last_error(); }

const char* q_error_name(uint32_t code) { return error_name(code); }

const char* q_error_description(uint32_t code) { return error_description(code); }
