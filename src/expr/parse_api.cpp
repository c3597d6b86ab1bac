#include "api_frame.h"
#include "c_locale.h"
#include "expression_parser.h"

using namespace quarn;

q_expression_t q_domain_parse_expression(q_domain_t domain, const char* text, q_parse_error_handler_t handler,
                                         void* data) {
    return api_call<q_expression_t>(nullptr, {domain, text}, [&] {
        const c_locale_scope in_c_locale;
        parse_reports reports(handler, data);
        scanner in(text, position_unit::character, reports);
        return parse_whole_expression(in, *domain).release();
    });
}
