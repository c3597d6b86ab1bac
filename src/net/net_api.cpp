#include "api_frame.h"
#include "c_locale.h"
#include "net_source.h"

using namespace quarn;

q_domain_t q_net_parse_domain(const char* source, q_parse_error_handler_t handler, void* data) {
    return api_call<q_domain_t>(nullptr, {source}, [&] {
        const c_locale_scope in_c_locale;
        parse_reports reports(handler, data);
        return read_net(source, reports).release();
    });
}

q_domain_t q_net_parse_domain_plain(const char* source, q_parse_error_plain_handler_t handler) {
    const q_parse_error_handler_t pass_on = [](size_t position, const char* message, void* plain) {
        (*static_cast<q_parse_error_plain_handler_t*>(plain))(position, message);
    };
    return q_net_parse_domain(source, handler != nullptr ? pass_on : nullptr, &handler);
}
