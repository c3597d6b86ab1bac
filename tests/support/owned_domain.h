// A domain that is deleted at the end of its scope.
#pragma once
#include <memory>

#include <quarn.h>

struct domain_deleter {
    void operator()(q_domain_t domain) const { q_domain_delete(domain); }
};
using owned_domain = std::unique_ptr<q_domain, domain_deleter>;
