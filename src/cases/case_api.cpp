#include "api_frame.h"
#include "c_locale.h"
#include "case_parser.h"
#include "case_writer.h"
#include "evidence.h"
#include "log_file.h"
#include "text_file.h"

using namespace quarn;

q_status_t q_domain_save_case(q_domain_t domain, const char* path) {
    return api_status({domain, path}, [&] {
        const c_locale_scope in_c_locale;
        write_file(path, case_text(*domain));
    });
}

q_status_t q_domain_parse_case(q_domain_t domain, const char* path, q_parse_error_handler_t handler,
                               void* data) {
    return api_status({domain, path}, [&] {
        owned_stream stream(open_file(path, "rb"));
        const c_locale_scope in_c_locale;
        retract_all_findings(*domain);
        parse_reports reports(handler, data);
        parse_case(read_text(std::move(stream)), *domain, reports);
    });
}
