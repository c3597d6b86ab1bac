#include "errors.h"

#include <array>
#include <new>
#include <stdexcept>

namespace quarn {
namespace {

struct error_entry {
    const char* name;
    const char* description;
};

// One row for each code, in the order of the codes.
constexpr std::array error_table{
    error_entry{"none",
                "The most recent call to a Quarn API function was successful (or no function has been "
                "called)."},
    error_entry{"usage",
                "An API function was called with an invalid argument (e.g., a NULL object was passed to a "
                "function that expects a non-NULL argument)."},
    error_entry{"io",
                "A fatal error occurred during an input or output operation.  This could be a failure to "
                "open a specified file, a failure to create a file due to wrong permissions, a failure "
                "during a write operation due to the disk running full, etc."},
    error_entry{"no_memory", "Quarn ran out of memory while carrying out some operation."},
    error_entry{"cg_limids_not_supported", "LIMIDs with CG nodes are not supported."},
    error_entry{"twice",
                "An attempt has been made to assign a name that is already in use to a node or a class."},
    error_entry{"invalid_name",
                "Names used for classes, nodes, and attributes must have the same form as a C identifier."},
    error_entry{"cyclic_network", "An attempt was made to create a cycle in the network."},
    error_entry{"cyclic_functional_dependency",
                "The link could not be created as it would cause a cyclic dependency in the evaluation of "
                "function nodes."},
    error_entry{"functional_dependency",
                "A functional dependency was detected.  Some Quarn API operations (including the SPU "
                "algorithm for LIMIDs) do not support such networks."},
    error_entry{"size_too_large", "The true size is too large to represent within the `size_t' type."},
    error_entry{"fast_retraction",
                "Logical relations in the distribution has caused a fast-retraction propagation to fail."},
    error_entry{"rounding", "Possibly significant floating-point rounding error detected."},
    error_entry{"bad_kb_password",
                "The supplied password does not match the password stored in the Quarn KB file."},
    error_entry{"bad_kb_version",
                "This Quarn KB file is not supported.  That is, the file was produced by a version of the "
                "Quarn API that is either very old or newer than 9.8."},
    error_entry{"bad_kb_type",
                "This Quarn KB file is of the wrong type for this operation.  A Quarn KB file contains "
                "either a domain or a class collection."},
    error_entry{"bad_kb_format",
                "This file is not a valid Quarn KB file.  Either the file is not a Quarn KB file, or the "
                "file has been damaged."},
    error_entry{"not_compiled", "The operation requires a compiled domain."},
    error_entry{"invalid_probability_potential",
                "An invalid value or an invalid distribution was found in a probability potential or "
                "policy: Values must be nonnegative and finite, and the sum of values in a distribution "
                "must be positive and finite."},
    error_entry{"chain_graph", "Chain graph: Zero probability found in parent potential."},
    error_entry{"enumeration",
                "The specified elimination sequence is invalid.  Possible causes: It contains a utility or "
                "a real-valued function node, a node appears twice, the nodes are `out-of-order', or the "
                "sequence is incomplete."},
    error_entry{"no_equilibrium", "The junction tree potentials are invalid."},
    error_entry{"low_density",
                "The density of the evidence presented is too low to represent as a positive floating-point"
                " number."},
    error_entry{"zero_variance", "Zero variance detected during a conditioning operation."},
    error_entry{"inconsistency_or_underflow",
                "Propagation of inconsistent evidence has been attempted, or underflow has occurred."},
    error_entry{"overflow", "Overflow occurred during propagation."},
    error_entry{"cg_evidence_incorporated",
                "This operation is not supported when the junction tree potentials have CG evidence "
                "incorporated."},
    error_entry{"normalization",
                "Normalization with a zero (or underflowed) normalization constant has been attempted."},
    error_entry{"compressed", "The operation is not supported on compressed domains."},
    error_entry{"table_too_large", "The compressed version of some non-clique table is too large."},
    error_entry{"invalid_evidence",
                "The specified evidence violates the \"free will\" condition, or evidence on a decision "
                "node is not an instantiation."},
    error_entry{"case_state_too_large", "A case state index larger than 32767 has been specified."},
    error_entry{"no_value", "No value has been specified."},
    error_entry{"parse",
                "An error occurred during parsing.  If a parse error handling function was specified, it "
                "will have been called with a description of the error and its location in the source."},
    error_entry{"invalid_expression", "The supplied expression is invalid (e.g., wrong type)."},
    error_entry{"syntax", "A syntax error has been detected while parsing an expression."},
    error_entry{"division_by_zero", "Division by zero has been attempted."},
    error_entry{"inappropriate_arguments",
                "Invalid arguments have been passed to a standard mathematical or probability/density "
                "function."},
    error_entry{"computation_failed",
                "A probability/density function or a function value could not be computed."},
    error_entry{"insufficient_state_range",
                "The state range of the node is insufficient for the chosen standard distribution."},
    error_entry{"invalid_state_values",
                "The state values of a numeric node do not form an increasing sequence, or infinite values "
                "are used incorrectly."},
    error_entry{"cyclic_instance_hierarchy", "Cyclic hierarchies of class instances are not allowed."},
    error_entry{"illegal_binding",
                "An actual input node is incompatible with the formal input node, or there are multiple "
                "occurrences of the same parent."},
    error_entry{"locale", "The Quarn API could not establish the C locale!"},
    error_entry{"reserved", "This code is reserved."},
    error_entry{"reserved", "This code is reserved."},
    error_entry{"reserved", "This code is reserved."},
    error_entry{"error",
                "This is an \"impossible\" error.  It should never occur.  It might be caused by an error "
                "in the Quarn API."},
};
static_assert(error_table.size() == q_error_error + 1);

constinit thread_local q_error_t thread_error = q_error_none;

}  // namespace

q_error_t last_error() noexcept { return thread_error; }

void set_error(q_error_t code) noexcept { thread_error = code; }

const char* error_name(uint32_t code) noexcept {
    return code < error_table.size() ? error_table[code].name : "no_such_error";
}

const char* error_description(uint32_t code) noexcept {
    return code < error_table.size() ? error_table[code].description : "No such error.";
}

q_error_t code_of_current_exception() noexcept {
    try {
        throw;
    } catch (const failure& failed) {
        return failed.code();
    } catch (const std::bad_alloc&) {
        return q_error_no_memory;
    } catch (const std::length_error&) {
        return q_error_no_memory;
    } catch (...) {
        return q_error_error;
    }
}

}  // namespace quarn
