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
