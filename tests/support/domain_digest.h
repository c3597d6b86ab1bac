// Everything of a domain that the public getters show, as a text: equal texts mean equal domains.
#pragma once

#include <string>

#include <quarn.h>

// Names are looked up, not read, as reading gives names to nodes that have none; only those of one letter, of an
// upper-case letter and a number up to 30, and "node_" with such a number are seen. Makes the tables of the nodes.
// Empty for a null.
std::string digest(q_domain_t domain);
