#include "allocation.h"
#include "api_frame.h"
#include "c_locale.h"
#include "net_writer.h"
#include "whole_file.h"

using namespace quarn;

q_status_t q_domain_save_as_net(q_domain_t domain, const char* path) {
    return api_status({domain, path}, [&] {
        const c_locale_scope in_c_locale;
        write_whole_file(path, write_net(*domain));
    });
}

char* q_domain_to_net(q_domain_t domain) {
    return api_call<char*>(nullptr, {domain}, [&] {
        const c_locale_scope in_c_locale;
        return duplicate_string(write_net(*domain).c_str()).release();
    });
}
