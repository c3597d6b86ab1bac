/*
 * Quarn: exact reasoning with probabilistic graphical models.
 *
 * A host program builds a network (a domain) node by node or reads it from a NET file, compiles it into a forest of
 * junction trees, enters evidence, propagates it, and reads beliefs and the probability of the evidence:
 *
 *     q_domain_t domain = q_net_parse_domain("chest_clinic.net", NULL, NULL);
 *     q_domain_compile(domain);
 *     q_node_select_state(q_domain_get_node_by_name(domain, "xray"), 0);
 *     q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal);
 *     double p = q_node_get_belief(q_domain_get_node_by_name(domain, "lung"), 0);
 *     q_domain_delete(domain);
 *
 * Conventions, which the comments below do not repeat:
 *
 * Failure   Every function sets the error code of the calling thread, to q_error_none when it succeeds; read it with
 *           q_error_code(). A function that fails returns
 *               status (q_status_t)       the error code itself, never 0
 *               handle, array, string     null
 *               count or size             all bits set, (size_t)-1
 *               number (q_number_t)       -1.0
 *               state index (int64_t)     -1
 *               predicate (q_boolean_t)   all bits set; 1 and 0 are its answers
 *           A null handle or pointer is q_error_usage unless the function says what null means. Every function that
 *           allocates can fail with q_error_no_memory. A call that fails leaves its objects as they were.
 * Looking   Looking up what is not there (a node by name, an attribute) is no failure: null or -1 with q_error_none.
 * Handles   stay valid until their object is deleted. A node belongs to its domain, a table to its node, a clique and
 *           a junction tree to the compiled domain: those go with the next structural change. The library does not
 *           recognise a handle that was deleted or never was one.
 * Arrays    and strings that the library returns belong to the object they were asked of; they are valid until that
 *           object is changed or deleted, or as said. Lists of handles end with a null.
 * Strings   passed in are copied. They are bytes ended by a zero, in whatever encoding the caller uses.
 * Order     "creation order" is the order in which the nodes of a domain were made.
 * Threads   A domain and all that is in it must be used by one thread at a time; different domains are independent.
 *           Reading or writing text switches the process to the "C" locale for that time when the host has set
 *           another one: such a host must not do so in two threads at once.
 *           A thread must not be cancelled (pthread_cancel) while it is in the library.
 * Silence   Nothing is ever printed to the standard streams, and the library never exits or aborts.
 */
#ifndef QUARN_H
#define QUARN_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define Q_API __attribute__((visibility("default")))
#else
#define Q_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef double q_number_t;
typedef int32_t q_error_t;
typedef int32_t q_status_t;
typedef uint32_t q_boolean_t;
typedef int32_t q_category_t, q_kind_t, q_subtype_t, q_triangulation_method_t, q_equilibrium_t, q_mode_t;
typedef int32_t q_operator_t;

typedef struct q_domain* q_domain_t;
typedef struct q_node* q_node_t;
typedef struct q_table* q_table_t;
typedef struct q_clique* q_clique_t;
typedef struct q_junction_tree* q_junction_tree_t;
typedef struct q_expression* q_expression_t;
typedef struct q_model* q_model_t;
typedef struct q_attribute* q_attribute_t;

/**
 * Receives each error and warning of a parser.
 *
 * position  line number, from 1, when a file is read; number of characters before the place when a text is read
 * message   at most 511 characters, no newline at the end; valid during the call only
 * data      what was passed to the parsing function
 */
typedef void (*q_parse_error_handler_t)(size_t position, const char* message, void* data);

/** The same without data. */
typedef void (*q_parse_error_plain_handler_t)(size_t position, const char* message);

/* The error codes; q_error_description() says what each means. */
enum {
    q_error_none = 0,
    q_error_usage = 1,
    q_error_io = 2,
    q_error_no_memory = 3,
    q_error_cg_limids_not_supported = 4,
    q_error_twice = 5,
    q_error_invalid_name = 6,
    q_error_cyclic_network = 7,
    q_error_cyclic_functional_dependency = 8,
    q_error_functional_dependency = 9,
    q_error_size_too_large = 10,
    q_error_fast_retraction = 11,
    q_error_rounding = 12,
    q_error_bad_kb_password = 13,
    q_error_bad_kb_version = 14,
    q_error_bad_kb_type = 15,
    q_error_bad_kb_format = 16,
    q_error_not_compiled = 17,
    q_error_invalid_probability_potential = 18,
    q_error_chain_graph = 19,
    q_error_enumeration = 20,
    q_error_no_equilibrium = 21,
    q_error_low_density = 22,
    q_error_zero_variance = 23,
    q_error_inconsistency_or_underflow = 24,
    q_error_overflow = 25,
    q_error_cg_evidence_incorporated = 26,
    q_error_normalization = 27,
    q_error_compressed = 28,
    q_error_table_too_large = 29,
    q_error_invalid_evidence = 30,
    q_error_case_state_too_large = 31,
    q_error_no_value = 32,
    q_error_parse = 33,
    q_error_invalid_expression = 34,
    q_error_syntax = 35,
    q_error_division_by_zero = 36,
    q_error_inappropriate_arguments = 37,
    q_error_computation_failed = 38,
    q_error_insufficient_state_range = 39,
    q_error_invalid_state_values = 40,
    q_error_cyclic_instance_hierarchy = 41,
    q_error_illegal_binding = 42,
    q_error_locale = 43,
    q_error_error = 47
};

/* What a node is for. */
enum {
    q_category_function = 5,
    q_category_instance = 6,
    q_category_chance = 7,
    q_category_decision = 8,
    q_category_utility = 9
};

/* What values a node takes: one of its states, a real number, or neither (utilities, real-valued functions). */
enum { q_kind_discrete = 0, q_kind_continuous = 1, q_kind_other = -1 };

/* How the states of a discrete node are meant. */
enum { q_subtype_label = 30, q_subtype_boolean = 31, q_subtype_number = 32, q_subtype_interval = 33 };

/* How a network is triangulated: see q_domain_triangulate(). */
enum {
    q_triangulate_clique_size = 15,
    q_triangulate_clique_weight = 16,
    q_triangulate_fill_in_size = 17,
    q_triangulate_fill_in_weight = 18,
    q_triangulate_total_weight = 19,
    q_triangulate_best_greedy = 20
};

/* What propagated tables represent: sums (beliefs) or maxima (most probable configurations). */
enum { q_equilibrium_none = 10, q_equilibrium_sum = 11, q_equilibrium_max = 12 };

/* Whether a belief takes the evidence on its own node into account, or only that on the others. */
enum { q_mode_normal = 20, q_mode_fast_retraction = 21 };

/* What a node of an expression is: an operator (q_expression_make_composite() says which arguments it takes), a
 * constant, or a reference to a node of the domain. */
enum {
    /* distributions */
    q_operator_normal = 60,
    q_operator_log_normal = 61,
    q_operator_beta = 62,
    q_operator_gamma = 63,
    q_operator_exponential = 64,
    q_operator_weibull = 65,
    q_operator_uniform = 66,
    q_operator_triangular = 67,
    q_operator_pert = 68,
    q_operator_binomial = 69,
    q_operator_poisson = 70,
    q_operator_negative_binomial = 71,
    q_operator_geometric = 72,
    q_operator_distribution = 73,
    q_operator_noisy_or = 74,
    q_operator_truncate = 75,
    q_operator_aggregate = 76,
    /* what is known of nodes */
    q_operator_probability = 77,
    q_operator_variance = 78,
    q_operator_quantile = 79,
    /* functions */
    q_operator_min = 80,
    q_operator_max = 81,
    q_operator_log = 82,
    q_operator_log2 = 83,
    q_operator_log10 = 84,
    q_operator_exp = 85,
    q_operator_sin = 86,
    q_operator_cos = 87,
    q_operator_tan = 88,
    q_operator_sinh = 89,
    q_operator_cosh = 90,
    q_operator_tanh = 91,
    q_operator_sqrt = 92,
    q_operator_abs = 93,
    q_operator_floor = 94,
    q_operator_ceil = 95,
    q_operator_mod = 96,
    q_operator_if = 97,
    q_operator_and = 98,
    q_operator_or = 99,
    q_operator_not = 100,
    /* operators written as symbols */
    q_operator_add = 101,
    q_operator_subtract = 102,
    q_operator_multiply = 103,
    q_operator_divide = 104,
    q_operator_power = 105,
    q_operator_negate = 106,
    q_operator_state_index = 107,
    q_operator_equals = 108,
    q_operator_less_than = 109,
    q_operator_greater_than = 110,
    q_operator_not_equals = 111,
    q_operator_less_than_or_equals = 112,
    q_operator_greater_than_or_equals = 113,
    /* leaves */
    q_operator_number = 114,
    q_operator_label = 115,
    q_operator_node = 116,
    q_operator_boolean = 117,
    q_operator_none = 118
};

/* ------------------------------------------------------------------------------------------------------------------
 * Errors
 * --------------------------------------------------------------------------------------------------------------- */

/** The error code of the calling thread's last call. Changes nothing; costs nothing. */
Q_API q_error_t q_error_code(void);

/** Short name of an error code, such as "usage"; "no_such_error" above 47. Never null; leaves the error code alone. */
Q_API const char* q_error_name(uint32_t code);

/** An error code in words; "No such error." above 47. Never null; leaves the error code alone. */
Q_API const char* q_error_description(uint32_t code);

/* ------------------------------------------------------------------------------------------------------------------
 * Domains
 * --------------------------------------------------------------------------------------------------------------- */

/** A new, empty domain; the caller frees it with q_domain_delete(). */
Q_API q_domain_t q_domain_new(void);

/**
 * Frees a domain and everything in it. The clean-up callbacks of the nodes (in creation order) and then that of the
 * domain are run first, while everything can still be read; they must not change the domain.
 *
 * errors  q_error_io: closing the log file failed; everything is freed all the same
 */
Q_API q_status_t q_domain_delete(q_domain_t domain);

/**
 * Opens the log file of a domain, to which compilation writes its trace; the one it had is closed.
 *
 * append  0: an existing file is emptied first; otherwise written to at its end
 * errors  q_error_io: the file cannot be opened (the old log stays in place); or the old one cannot be closed (the
 *         domain then keeps it, unusable: whatever writes to the log fails with q_error_io until another is set)
 */
Q_API q_status_t q_domain_set_log_file(q_domain_t domain, const char* path, int append);

/**
 * Sets how many threads an operation on the tables of a domain may use: 1, the default, means the calling thread alone.
 * With more, propagation splits its work on large tables; threads are started for one operation and have ended when it
 * does, so none is there between calls. The results are the same to the last bit for every number of threads.
 *
 * errors  q_error_usage: a level of 0
 */
Q_API q_status_t q_domain_set_concurrency_level(q_domain_t domain, size_t level);
Q_API size_t q_domain_get_concurrency_level(q_domain_t domain);

/**
 * Sets the least work that a thread is started for, in operations on single numbers; 10000 by default. Starting a thread
 * takes some ten microseconds, in which this many operations are done.
 *
 * errors  q_error_usage: a grain of 0
 */
Q_API q_status_t q_domain_set_grain_size(q_domain_t domain, size_t grain);
Q_API size_t q_domain_get_grain_size(q_domain_t domain);

/**
 * Creates a node, unnamed and without links, with subtype label; a discrete one has one state. Uncompiles the domain
 * unless the node is a real-valued function.
 *
 * category  chance or decision (kind discrete or continuous), utility (the kind is not looked at), or function (kind
 *           discrete, or other for a real-valued function)
 * errors    q_error_usage: any other category, or a kind that does not go with it;
 *           q_error_cg_limids_not_supported: continuous nodes beside decisions or utilities;
 *           q_error_cyclic_functional_dependency: the first decision or utility of a domain in which some function
 *           node with a discrete or continuous parent has a discrete or continuous node among itself and its
 *           descendants
 */
Q_API q_node_t q_domain_new_node(q_domain_t domain, q_category_t category, q_kind_t kind);

/** The node created last, from which q_node_get_next() leads to the older ones; null with q_error_none if none. */
Q_API q_node_t q_domain_get_first_node(q_domain_t domain);

/** The node of that name, or null with q_error_none. Takes constant time on average. */
Q_API q_node_t q_domain_get_node_by_name(q_domain_t domain, const char* name);

/** Sets the size at which front ends draw nodes; (0, 0) in a new domain. Any integers are accepted. */
Q_API q_status_t q_domain_set_node_size(q_domain_t domain, int32_t width, int32_t height);

/** Reads the node size into two distinct places (q_error_usage when they are the same). */
Q_API q_status_t q_domain_get_node_size(q_domain_t domain, int32_t* width, int32_t* height);

/**
 * Sets an attribute, a text of the caller's own; attributes keep the order in which their keys were first set.
 *
 * value   null removes the attribute (and succeeds when there is none)
 * errors  q_error_invalid_name: the key has not the form of a C identifier, or is node_size, which NET files use
 */
Q_API q_status_t q_domain_set_attribute(q_domain_t domain, const char* key, const char* value);

/** The value of an attribute, valid until it is set again or removed; null with q_error_none when there is none. */
Q_API const char* q_domain_get_attribute(q_domain_t domain, const char* key);

/** The first attribute of a domain, or null with q_error_none; valid until it is removed. */
Q_API q_attribute_t q_domain_get_first_attribute(q_domain_t domain);

/** The attribute after this one, or null with q_error_none. */
Q_API q_attribute_t q_attribute_get_next(q_attribute_t attribute);

/** The key of an attribute. */
Q_API const char* q_attribute_get_key(q_attribute_t attribute);

/** The value of an attribute. */
Q_API const char* q_attribute_get_value(q_attribute_t attribute);

/** Stores a pointer of the caller's with a domain; the library never follows it. */
Q_API q_status_t q_domain_set_user_data(q_domain_t domain, void* data);

/** The pointer stored with a domain; null with q_error_none when none is. */
Q_API void* q_domain_get_user_data(q_domain_t domain);

/** Registers what is called when the domain is deleted; null unregisters. User data can be read inside the callback. */
Q_API q_status_t q_domain_set_user_data_cleanup(q_domain_t domain, void (*cleanup)(q_domain_t));

/* ------------------------------------------------------------------------------------------------------------------
 * Nodes
 * --------------------------------------------------------------------------------------------------------------- */

/** The node created before this one, or null with q_error_none: walks a domain from the newest node to the oldest. */
Q_API q_node_t q_node_get_next(q_node_t node);

/** The domain that a node is in. */
Q_API q_domain_t q_node_get_domain(q_node_t node);

/** The category of a node; -1 for a null node. */
Q_API q_category_t q_node_get_category(q_node_t node);

/** The kind of a node; -2 for a null node. */
Q_API q_kind_t q_node_get_kind(q_node_t node);

/** The subtype of a node; -1 on failure (q_error_usage: not discrete). */
Q_API q_subtype_t q_node_get_subtype(q_node_t node);

/**
 * Turns a discrete chance node into a decision or a decision into a chance node. Uncompiles the domain.
 *
 * errors  q_error_usage: another category; a node that is not discrete, is a utility or a function, has an experience
 *         or fading table, or is joined to others by undirected links; q_error_cg_limids_not_supported and
 *         q_error_cyclic_functional_dependency, as for q_domain_new_node(), when the node becomes a decision
 */
Q_API q_status_t q_node_set_category(q_node_t node, q_category_t category);

/** Sets the subtype of a discrete node. errors: q_error_usage: not discrete; boolean without exactly two states. */
Q_API q_status_t q_node_set_subtype(q_node_t node, q_subtype_t subtype);

/**
 * Names a node: a C identifier, or several joined by dots.
 *
 * errors  q_error_twice: another node of the domain has the name; q_error_invalid_name
 */
Q_API q_status_t q_node_set_name(q_node_t node, const char* name);

/**
 * The name of a node. One that has none is given one first: a letter for its category (C, D, U or F) and its number
 * in creation order, or the first free number after the number of nodes.
 */
Q_API const char* q_node_get_name(q_node_t node);

/** Sets the label of a node, a text for people. */
Q_API q_status_t q_node_set_label(q_node_t node, const char* label);

/** The label of a node; the empty text when none was set. */
Q_API const char* q_node_get_label(q_node_t node);

/** Sets the place at which front ends draw a node; (0, 0) for a new one. */
Q_API q_status_t q_node_set_position(q_node_t node, int32_t x, int32_t y);

/** Reads the position of a node into two distinct places (q_error_usage when they are the same). */
Q_API q_status_t q_node_get_position(q_node_t node, int32_t* x, int32_t* y);

/**
 * Sets the number of states of a discrete node. States are added and removed at the end. In every table over the node
 * an added state takes a copy of the entries of state 0, a removed one takes its entries with it. A selected state
 * that still exists stays selected, all other evidence on the node is retracted. Uncompiles the domain.
 *
 * count   1 .. 2^63 - 1
 * errors  q_error_usage: not discrete, count out of range, or a boolean node (unless it is the present count);
 *         q_error_no_memory: some table would not fit; q_error_size_too_large: the number of configurations of a model
 *         would not fit size_t
 */
Q_API q_status_t q_node_set_number_of_states(q_node_t node, size_t count);

/** The number of states of a discrete node (others: q_error_usage). */
Q_API size_t q_node_get_number_of_states(q_node_t node);

/** Labels a state of a discrete node. Two states may share a label. errors: q_error_usage: not discrete, no such state. */
Q_API q_status_t q_node_set_state_label(q_node_t node, size_t state, const char* label);

/** The label of a state; when none was set, "false" and "true" for the states of a boolean node, else the empty text. */
Q_API const char* q_node_get_state_label(q_node_t node, size_t state);

/**
 * Sets a number that the states of a node stand for. The first call sets all others to -1; in an interval node, the
 * first bound to the most negative and the last to the largest finite double, which stand for minus and plus infinity.
 *
 * index   numbered node: a state; interval node: a bound, 0 .. number of states
 * errors  q_error_usage: neither numbered nor interval, index out of range
 */
Q_API q_status_t q_node_set_state_value(q_node_t node, size_t index, q_number_t value);

/** A value set by q_node_set_state_value(). errors: as there, and q_error_usage when no value was ever set. */
Q_API q_number_t q_node_get_state_value(q_node_t node, size_t index);

/** The one state with that label; -1 with q_error_none when none or several have it, or it is empty. errors:
 *  q_error_usage: not discrete. */
Q_API int64_t q_node_get_state_index_from_label(q_node_t node, const char* label);

/**
 * The state that a number selects; -1 with q_error_none when there is none.
 * A numbered node: the first state whose value differs by at most 1e-6 times the number. An interval node: the
 * interval that contains it, closed below and open above, the last one closed; infinite bounds hold everything.
 *
 * errors  q_error_usage: neither numbered nor interval; values that were never set, do not increase (two neighbouring
 *         bounds may be equal, three not), or are infinite elsewhere than at the ends of an interval node
 */
Q_API int64_t q_node_get_state_index_from_value(q_node_t node, q_number_t value);

/**
 * Puts the states of a label node in another order; labels, evidence and every table follow. Uncompiles the domain
 * unless the order is the present one.
 *
 * labels  the present labels in the new order, ended by a null: each state once
 * errors  q_error_usage: not discrete with subtype label, an unknown or repeated label, a wrong number of labels
 */
Q_API q_status_t q_node_reorder_states(q_node_t node, const char* const* labels);

/**
 * Adds a link. A discrete or continuous parent also goes into the child's tables when they exist (not a function
 * child's): a discrete one in front, the old values being repeated for each of its states, a continuous one at the
 * end with coefficient 0. Uncompiles the domain unless the child is a function node.
 *
 * errors  q_error_usage: different domains, already a parent, a utility as parent of a chance, decision or utility
 *         node, a continuous parent of a discrete node (function nodes take any); q_error_cyclic_network: a directed
 *         cycle, nodes that are joined by undirected links counting as one;
 *         q_error_cyclic_functional_dependency, q_error_functional_dependency: the evaluation of function nodes would
 *         depend on itself, or decisions on it; q_error_no_memory: the child's table would not fit
 */
Q_API q_status_t q_node_add_parent(q_node_t child, q_node_t parent);

/** Removes a link; the child's tables keep what they hold for state 0 of a discrete parent. errors: q_error_usage. */
Q_API q_status_t q_node_remove_parent(q_node_t child, q_node_t parent);

/** Removes the link from a discrete parent; the child's tables keep what they hold for that state of it.
 *  errors: q_error_usage: not a parent, not discrete, no such state. */
Q_API q_status_t q_node_remove_parent_keep_state(q_node_t child, q_node_t parent, size_t state);

/**
 * Puts another node in the place of a parent; the child's tables keep their values. Where the child shares such a table
 * with nodes joined to it by undirected links, these get a link from the new parent too. Uncompiles the domain.
 *
 * errors  as q_node_add_parent(); q_error_usage also when the old parent is none, or the two differ in category,
 *         kind, number of states, subtype, or (as the subtype says) state labels or values
 */
Q_API q_status_t q_node_switch_parent(q_node_t child, q_node_t old_parent, q_node_t new_parent);

/** The parents of a node, in the order in which they were added; valid until a link to the node is changed. */
Q_API const q_node_t* q_node_get_parents(q_node_t node);

/** The children of a node, in the order in which the links were added; valid until a link from it is changed. */
Q_API const q_node_t* q_node_get_children(q_node_t node);

/** The node and all its ancestors, nearest first; valid until the next query of ancestors or descendants of the node. */
Q_API const q_node_t* q_node_get_ancestors(q_node_t node);

/** The node and all its descendants, nearest first; valid until the next query of ancestors or descendants of the node. */
Q_API const q_node_t* q_node_get_descendants(q_node_t node);

/**
 * A new node like this one: category, kind, label, attributes, position, states, table, model, and the same parents; but
 * no name, children, undirected links, evidence, user data, experience or fading table. Uncompiles the domain unless it
 * is a real-valued function.
 */
Q_API q_node_t q_node_clone(q_node_t node);

/**
 * Deletes a node with its links; the tables of its children keep what they hold for its state 0. Its clean-up callback
 * is run while its texts and user data can still be read; it must not change the domain. Uncompiles the domain unless
 * the node is a real-valued function. Lack of memory matters only where a child has a model.
 *
 * errors  q_error_usage: the node is joined to others by undirected links; q_error_no_memory
 */
Q_API q_status_t q_node_delete(q_node_t node);

/** As q_domain_set_attribute(); the keys label, position, states, subtype and state_values are q_error_invalid_name. */
Q_API q_status_t q_node_set_attribute(q_node_t node, const char* key, const char* value);

/** The value of an attribute; null with q_error_none when there is none. */
Q_API const char* q_node_get_attribute(q_node_t node, const char* key);

/** The first attribute of a node, or null with q_error_none. */
Q_API q_attribute_t q_node_get_first_attribute(q_node_t node);

/** Stores a pointer of the caller's with a node; the library never follows it. */
Q_API q_status_t q_node_set_user_data(q_node_t node, void* data);

/** The pointer stored with a node; null with q_error_none when none is. */
Q_API void* q_node_get_user_data(q_node_t node);

/** Registers what is called when the node is deleted, with it or with its domain; null unregisters. */
Q_API q_status_t q_node_set_user_data_cleanup(q_node_t node, void (*cleanup)(q_node_t));

/* ------------------------------------------------------------------------------------------------------------------
 * Tables
 *
 * A table holds one number for each configuration of its discrete nodes. Configurations are numbered in row-major
 * order: the state of the last discrete node varies fastest. With continuous nodes it also holds a mean and a row of
 * covariances for each of them and each configuration.
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * The table of a node, made on the first request. It stays the same, and follows every change of states and links,
 * until the node is deleted.
 *
 * Over     a discrete node: its discrete parents in their order, then the node (probabilities, or a decision's policy;
 *          a discrete function: the node alone); a continuous node: its discrete parents, the node, its continuous
 *          parents; a utility: its discrete parents. A parent that is added later comes first: go by
 *          q_table_get_nodes().
 * Holds    1 everywhere, a utility table 0; a continuous node: mean 0 and variance 1
 * errors   q_error_usage: a real-valued function
 */
Q_API q_table_t q_node_get_table(q_node_t node);

/**
 * Tells the library that the caller has written into the table of a node, so that the next propagation uses the new
 * values: call it after writing through q_table_get_data(). errors: q_error_usage: a real-valued function.
 */
Q_API q_status_t q_node_touch_table(q_node_t node);

/** The experience counts of a chance node, one for each configuration of its discrete parents; null with q_error_none
 *  when it has none. */
Q_API q_table_t q_node_get_experience_table(q_node_t node);

/** The fading factors of a discrete chance node, one for each configuration of its discrete parents; null with
 *  q_error_none when it has none. */
Q_API q_table_t q_node_get_fading_table(q_node_t node);

/** Gives a chance node an experience table of zeros, or returns the one it has. errors: q_error_usage: not chance. */
Q_API q_table_t q_node_new_experience_table(q_node_t node);

/** Gives a discrete chance node a fading table of ones, or returns the one it has. errors: q_error_usage. */
Q_API q_table_t q_node_new_fading_table(q_node_t node);

/** The nodes of a table, all discrete ones first; valid until the table changes its shape. */
Q_API const q_node_t* q_table_get_nodes(q_table_t table);

/**
 * The numbers of a table, q_table_get_size() of them, for reading and writing; valid until the table changes its shape.
 * They are allocated at the first request. See q_node_touch_table().
 *
 * errors  q_error_size_too_large: their number does not fit size_t; q_error_no_memory
 */
Q_API q_number_t* q_table_get_data(q_table_t table);

/** The number of discrete configurations; 1 without discrete nodes. errors: q_error_size_too_large. */
Q_API size_t q_table_get_size(q_table_t table);

/** The number of means and covariances: K (K + 3) / 2 for K continuous nodes, for each configuration; else 0.
 *  errors: q_error_size_too_large. */
Q_API size_t q_table_get_cg_size(q_table_t table);

/**
 * The mean of a continuous node in one configuration.
 *
 * errors  q_error_usage: configuration out of range, not a continuous node of the table, the table holds no
 *         distribution of it, or it holds conditional distributions (of a node given continuous parents);
 *         q_error_size_too_large
 */
Q_API q_number_t q_table_get_mean(q_table_t table, size_t configuration, q_node_t node);

/** The covariance of two continuous nodes in one configuration, in either order. errors: as q_table_get_mean(). */
Q_API q_number_t q_table_get_covariance(q_table_t table, size_t configuration, q_node_t node1,
                                        q_node_t node2);

/** The variance of a continuous node in one configuration. errors: as q_table_get_mean(). */
Q_API q_number_t q_table_get_variance(q_table_t table, size_t configuration, q_node_t node);

/**
 * A continuous chance node is normally distributed in each configuration of its discrete parents: its mean is the
 * intercept plus, for each continuous parent, a coefficient times the parent; its variance is constant. Setting one of
 * these counts as touching the table.
 *
 * configuration  number of the configuration of the discrete nodes of the node's table
 * value          a variance must not be negative (q_error_usage)
 * errors         q_error_usage: not a continuous chance node, configuration out of range, not a continuous parent of
 *                the node; q_error_size_too_large
 */
Q_API q_status_t q_node_set_cg_intercept(q_node_t node, size_t configuration, q_number_t value);
Q_API q_status_t q_node_set_cg_coefficient(q_node_t node, q_node_t parent, size_t configuration,
                                           q_number_t value);
Q_API q_status_t q_node_set_cg_variance(q_node_t node, size_t configuration, q_number_t value);

/** Read what the functions above set; same errors, -1.0 on failure. */
Q_API q_number_t q_node_get_cg_intercept(q_node_t node, size_t configuration);
Q_API q_number_t q_node_get_cg_coefficient(q_node_t node, q_node_t parent, size_t configuration);
Q_API q_number_t q_node_get_cg_variance(q_node_t node, size_t configuration);

/* ------------------------------------------------------------------------------------------------------------------
 * Expressions and models
 *
 * An expression is a tree; docs/expressions.md is its language, with what every operator means. It belongs to the caller
 * until it becomes an argument of another expression or goes into a model. It does not own the nodes that it refers to:
 * outside a model it must not be used after one of them was deleted, but for deleting it.
 *
 * A model gives a node one expression for each configuration of its model nodes, some of its discrete parents. The value
 * of a function node is computed from its model whenever its domain is propagated: see q_node_get_value(). Models of other
 * nodes are kept, but no tables are generated from them yet.
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * An expression that applies an operator to arguments. It takes these over when it succeeds; when it fails they stay with
 * the caller.
 *
 * op         an operator, q_operator_normal to q_operator_greater_than_or_equals
 * arguments  ended by a null; the array itself stays the caller's
 * errors     q_error_usage: no operator, or an argument that belongs to another expression or a model, or is listed twice;
 *            q_error_invalid_expression: a number or type of arguments that the operator does not take
 *            (docs/expressions.md)
 */
Q_API q_expression_t q_expression_make_composite(q_operator_t op, const q_expression_t* arguments);

/** A number. Infinities become the largest finite doubles, which stand for them. errors: q_error_usage: not a number. */
Q_API q_expression_t q_expression_make_number(q_number_t number);

/** A label, to compare the states of label nodes with or to choose one. */
Q_API q_expression_t q_expression_make_label(const char* label);

/** A reference to a node: what it yields depends on the node (docs/expressions.md). */
Q_API q_expression_t q_expression_make_node(q_node_t node);

/** False (0) or true (anything else). */
Q_API q_expression_t q_expression_make_boolean(int flag);

/** What an expression is; q_operator_none for a null one, with q_error_usage. */
Q_API q_operator_t q_expression_get_operator(q_expression_t expression);

/** The arguments of a composite, ended by a null; they belong to it. errors: q_error_usage: not a composite. */
Q_API const q_expression_t* q_expression_get_arguments(q_expression_t expression);

/** What a constant or reference holds; each fails with q_error_usage for an expression of another sort. */
Q_API q_number_t q_expression_get_number(q_expression_t expression);
Q_API const char* q_expression_get_label(q_expression_t expression);
Q_API q_node_t q_expression_get_node(q_expression_t expression);
Q_API int q_expression_get_boolean(q_expression_t expression);

/** Whether an expression applies an operator to arguments. */
Q_API q_boolean_t q_expression_is_composite(q_expression_t expression);

/** A copy of an expression with all its arguments, which belongs to the caller. */
Q_API q_expression_t q_expression_clone(q_expression_t expression);

/** Deletes an expression with all its arguments. errors: q_error_usage: it belongs to another expression or a model. */
Q_API q_status_t q_expression_delete(q_expression_t expression);

/**
 * The text of an expression, with as few parentheses as it takes, for the caller to free with q_string_delete(). Reading
 * it gives an equal expression, with numbers rounded to eight significant digits; exceptions: docs/expressions.md.
 *
 * errors  q_error_locale
 */
Q_API char* q_expression_to_string(q_expression_t expression);

/**
 * Reads an expression (docs/expressions.md), which belongs to the caller.
 *
 * domain   where the nodes are that it names
 * handler  called with each error and warning, positions being numbers of characters; may be null
 * data     passed on to the handler
 * errors   q_error_parse: an error was reported; q_error_invalid_expression: an operator with arguments that it does not
 *          take, which was reported; q_error_locale
 */
Q_API q_expression_t q_domain_parse_expression(q_domain_t domain, const char* text,
                                               q_parse_error_handler_t handler, void* data);

/** Frees a text that the library made for the caller; null is allowed. */
Q_API void q_string_delete(char* text);

/**
 * Gives a node a model, which holds no expressions yet and belongs to the node. It follows changes of states and links:
 * states of a model node are added without expressions, removed with theirs, and reordered with them. The expressions for
 * state 0 (or the one that is kept) of a model node that is removed stay. In them a constant takes the place of a parent
 * that is removed: what it yields in that state, 0 where it has no states or no valid state values; its variance is 0, its
 * quantiles the constant. A clone of the node has a copy.
 *
 * nodes   discrete parents of the node, each once; the state of the last one varies fastest in the numbers of
 *         configurations. May be empty: one configuration
 * errors  q_error_usage: the node has a model or is continuous, a node that is no discrete parent or listed twice;
 *         q_error_size_too_large: the number of configurations does not fit size_t
 */
Q_API q_model_t q_node_new_model(q_node_t node, const q_node_t* nodes);

/** The model of a node, or null with q_error_none. */
Q_API q_model_t q_node_get_model(q_node_t node);

/** Deletes a model with its expressions. The table of its node keeps its numbers. */
Q_API q_status_t q_model_delete(q_model_t model);

/** The model nodes, ended by a null; valid until a link to the node is changed. */
Q_API const q_node_t* q_model_get_nodes(q_model_t model);

/** The number of expressions that a model has room for: one for each configuration of its nodes. */
Q_API size_t q_model_get_size(q_model_t model);

/**
 * Puts an expression into a model, which takes it over when it succeeds and deletes the one that was there.
 *
 * configuration  0 .. q_model_get_size() - 1
 * expression     null: none for this configuration. It must yield what selects a state of the node (a label, a boolean or
 *                a number, by its subtype), or a number for a real-valued function or utility; for a chance node also a
 *                distribution. It may refer to parents of the node only
 * errors         q_error_usage: no such configuration, the expression belongs to another one or a model;
 *                q_error_invalid_expression: of another type, or it refers to other nodes
 */
Q_API q_status_t q_model_set_expression(q_model_t model, size_t configuration, q_expression_t expression);

/** The expression for a configuration, which belongs to the model; null with q_error_none when there is none. errors:
 *  q_error_usage: no such configuration. */
Q_API q_expression_t q_model_get_expression(q_model_t model, size_t configuration);

/** Sets how many samples of each interval of a parent a table is to be generated from. errors: q_error_usage: 0, or
 *  more than 2^53. */
Q_API q_status_t q_model_set_samples_per_interval(q_model_t model, size_t count);

/** The number of samples per interval; 0 when none was set. */
Q_API size_t q_model_get_samples_per_interval(q_model_t model);

/* ------------------------------------------------------------------------------------------------------------------
 * Compilation
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * Compiles a domain into a forest of junction trees: moral graph, triangulation, cliques, and a clique for the table of
 * every node (Lauritzen & Spiegelhalter 1988). A domain that is not triangulated is triangulated with
 * q_triangulate_best_greedy first; otherwise its junction trees are kept. Time and memory grow with the total size of the
 * cliques, which can be exponential in the number of nodes. A trace goes to the log. A node without a table is given its
 * default one. Entered evidence stays; nothing is propagated yet.
 *
 * errors  q_error_usage: no discrete or continuous nodes, all of them excluded, or compiled already;
 *         q_error_size_too_large: the size of a table does not fit 64 bits; q_error_no_memory: or all tables together
 *         exceed the memory of the machine; q_error_io: writing the log failed. The domain is left uncompiled; the log
 *         tells how large the cliques are.
 */
Q_API q_status_t q_domain_compile(q_domain_t domain);

/**
 * Triangulates a domain and links its cliques into junction trees, without tables; q_domain_compile() then goes on from
 * there. Each piece of the moral graph between complete separators is triangulated by itself. With continuous nodes the
 * triangulation is a strong one: they are eliminated before the discrete ones.
 *
 * method  what is made small, one elimination after the other (Kjaerulff 1990): the number of nodes in the new clique,
 *         its weight (table entries), the number of links added, or their weight; q_triangulate_best_greedy takes the
 *         one of these four with the least total weight of the cliques. q_triangulate_total_weight searches for the
 *         least total weight by way of minimal separators (Berry, Bordat & Cogis 2000; Bouchitte & Todinca 2001), within
 *         the limits below: never worse than best greedy or the initial triangulation, and optimal when it finds all
 *         minimal separators; pieces of more than 4,000 nodes are not searched. It takes some ten seconds at most for a
 *         piece, most of all where it has very many separators
 * errors  q_error_usage: triangulated already, an unknown method, no discrete or continuous nodes but excluded ones, or
 *         q_triangulate_total_weight with a separator size limit and no initial triangulation;
 *         q_error_size_too_large; q_error_io: writing the log failed. The domain is left uncompiled.
 */
Q_API q_status_t q_domain_triangulate(q_domain_t domain, q_triangulation_method_t method);

/**
 * Triangulates a domain by eliminating its nodes in a given order; links that the order adds without need are left out.
 *
 * order   null-terminated: all discrete and continuous nodes but the excluded ones, each once, continuous before
 *         discrete
 * errors  as for q_domain_triangulate(); q_error_enumeration: not such an order
 */
Q_API q_status_t q_domain_triangulate_with_order(q_domain_t domain, const q_node_t* order);

/**
 * The elimination order of the last triangulation: the given one, or one that adds no links to the triangulated graph.
 * Valid until the domain is triangulated again, or a discrete or continuous node is created or deleted; then it is
 * forgotten. It survives uncompiling.
 *
 * errors  q_error_usage: not triangulated since then
 */
Q_API const q_node_t* q_domain_get_elimination_order(q_domain_t domain);

/**
 * Stores an elimination order, as for q_domain_triangulate_with_order(), whose triangulation the search of
 * q_triangulate_total_weight starts from; null deletes it. It is forgotten when a discrete or continuous node is created
 * or deleted, or other nodes are excluded.
 *
 * errors  q_error_enumeration: not such an order; the stored one stays
 */
Q_API q_status_t q_domain_set_initial_triangulation(q_domain_t domain, const q_node_t* order);

/**
 * Excludes discrete nodes from the junction trees: nodes that will be instantiated whenever the domain is propagated, so
 * that the cliques are smaller. Null, or an empty list, excludes none. What they are observed in counts as propagated
 * evidence at all times; an excluded decision is made, and its policy never counts.
 *
 * nodes   null-terminated; copied. A node that is deleted leaves the list
 * errors  q_error_usage: triangulated or compiled, a node of another domain or not discrete
 */
Q_API q_status_t q_domain_set_excluded_nodes(q_domain_t domain, const q_node_t* nodes);

/**
 * Limits of the search of q_triangulate_total_weight: how many minimal separators of a piece are looked for (100,000 by
 * default; 0: no search), and how many nodes these may have (0, the default: any number).
 */
Q_API q_status_t q_domain_set_max_separators(q_domain_t domain, size_t count);
Q_API size_t q_domain_get_max_separators(q_domain_t domain);
Q_API q_status_t q_domain_set_max_separator_size(q_domain_t domain, size_t size);
Q_API size_t q_domain_get_max_separator_size(q_domain_t domain);

/** Drops the junction trees and all results; every structural change does so too. Succeeds when there are none. */
Q_API q_status_t q_domain_uncompile(q_domain_t domain);

/** Whether the domain is compiled. */
Q_API q_boolean_t q_domain_is_compiled(q_domain_t domain);

/** Whether the domain is triangulated: it has junction trees. So it is when it is compiled. */
Q_API q_boolean_t q_domain_is_triangulated(q_domain_t domain);

/** Whether the domain is compressed (see q_domain_compress). */
Q_API q_boolean_t q_domain_is_compressed(q_domain_t domain);

/** The first junction tree of a domain, from which q_junction_tree_get_next() leads on; null with q_error_none when it
 *  is not triangulated. */
Q_API q_junction_tree_t q_domain_get_first_junction_tree(q_domain_t domain);

/** The junction tree after this one, or null with q_error_none. */
Q_API q_junction_tree_t q_junction_tree_get_next(q_junction_tree_t tree);

/** The clique at which the tree is rooted; with continuous nodes a strong root. */
Q_API q_clique_t q_junction_tree_get_root(q_junction_tree_t tree);

/** The cliques of a tree. */
Q_API const q_clique_t* q_junction_tree_get_cliques(q_junction_tree_t tree);

/** The sum, over the cliques of a tree, of the configurations of the discrete nodes and these times the number of
 *  continuous nodes; all bits set, with q_error_none, where it does not fit. */
Q_API size_t q_junction_tree_get_total_size(q_junction_tree_t tree);

/** The tree that a clique is in. */
Q_API q_junction_tree_t q_clique_get_junction_tree(q_clique_t clique);

/** The nodes of a clique, discrete ones first. */
Q_API const q_node_t* q_clique_get_members(q_clique_t clique);

/** The cliques next to a clique in its tree. */
Q_API const q_clique_t* q_clique_get_neighbors(q_clique_t clique);

/** The tree that a discrete or continuous node is in; null with q_error_not_compiled when the domain is not triangulated
 *  (compiled, for an excluded node). */
Q_API q_junction_tree_t q_node_get_junction_tree(q_node_t node);

/* ------------------------------------------------------------------------------------------------------------------
 * D-separation
 *
 * Which beliefs can a change of belief at some nodes reach, given that others are observed? The links alone tell: the
 * domain need not be compiled, and no evidence need be entered. A query takes time linear in nodes and links.
 *
 * Belief goes along links in both directions, but does not pass a node with hard evidence. It goes from one parent of
 * a node to another only if that node or a descendant has evidence, hard or soft. It never goes up from a function or
 * a decision node, nor up to a real-valued function: such links make no ancestors here.
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * The nodes d-connected to the sources, among them the sources without hard evidence; and all other nodes.
 *
 * sources, hard, soft  lists of nodes that end with a null, possibly empty: the nodes asked for, those whose states are
 *                      observed, and those with likelihoods (a node in both is observed)
 * result   in creation order, functions and utilities included; the next of these queries in the domain overwrites it,
 *          but may be given it as a list
 * errors   q_error_usage: a node of another domain, a utility or a real-valued function in a list;
 *          q_error_invalid_evidence: a decision without hard evidence has soft evidence or is an ancestor of evidence,
 *          or it is an ancestor of a source and no source itself
 */
Q_API const q_node_t* q_domain_get_d_connected_nodes(q_domain_t domain, const q_node_t* sources,
                                                     const q_node_t* hard, const q_node_t* soft);
Q_API const q_node_t* q_domain_get_d_separated_nodes(q_domain_t domain, const q_node_t* sources,
                                                     const q_node_t* hard, const q_node_t* soft);

/* ------------------------------------------------------------------------------------------------------------------
 * Evidence
 *
 * Evidence on a discrete node is a vector of weights, one for each state: one 1 among zeros selects a state, all ones
 * are no evidence, anything else is a likelihood. Evidence on a continuous node is a value. It can be entered at any
 * time, compiled or not, and takes effect with the next propagation: results take the propagated evidence into account,
 * whatever has been entered since. It stays until it is retracted. On a node of one state, observing it is no evidence:
 * it gives nothing to propagate, though open decisions above it must not be there for it either.
 *
 * Utilities and real-valued functions hold no evidence. An excluded node (q_domain_set_excluded_nodes()) must have a
 * selected state whenever the domain is propagated.
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * Sets the weight of one state; the weights of the others stay (all 1 without evidence).
 *
 * value   from 0 to below the largest finite double
 * errors  q_error_usage: not discrete, no such state, a value out of range or NaN
 */
Q_API q_status_t q_node_enter_finding(q_node_t node, size_t state, q_number_t value);

/** Observes a state of a discrete node. errors: q_error_usage: not discrete, no such state. */
Q_API q_status_t q_node_select_state(q_node_t node, size_t state);

/** Observes a value, any double, of a continuous node. errors: q_error_usage: not continuous. */
Q_API q_status_t q_node_enter_value(q_node_t node, q_number_t value);

/** Removes the evidence on a node. errors: q_error_usage: a utility or a real-valued function. */
Q_API q_status_t q_node_retract_findings(q_node_t node);

/** Removes the evidence on all nodes, values and the states of excluded nodes included. */
Q_API q_status_t q_domain_retract_findings(q_domain_t domain);

/** The weight of a state as it was entered; 1.0 without evidence. errors: q_error_usage: not discrete, no such state. */
Q_API q_number_t q_node_get_entered_finding(q_node_t node, size_t state);

/** The weight of a state that the results take into account. errors: as above; q_error_not_compiled;
 *  q_error_no_equilibrium: nothing propagated yet. */
Q_API q_number_t q_node_get_propagated_finding(q_node_t node, size_t state);

/** The value entered on a node. errors (-1.0, which may be a value too): q_error_usage: not continuous;
 *  q_error_no_value: none is entered. */
Q_API q_number_t q_node_get_entered_value(q_node_t node);

/** The value that the results take into account. errors: as above, q_error_no_value: none; q_error_not_compiled;
 *  q_error_no_equilibrium. */
Q_API q_number_t q_node_get_propagated_value(q_node_t node);

/** The observed state; -1 without evidence, -2 for a likelihood. errors (-1): q_error_usage: not discrete. */
Q_API int64_t q_node_get_selected_state(q_node_t node);

/** The same for the evidence that the results take into account. errors: as q_node_get_propagated_finding(). */
Q_API int64_t q_node_get_propagated_state(q_node_t node);

/** Whether evidence is entered on a node. errors: q_error_usage: a utility or a real-valued function. */
Q_API q_boolean_t q_node_evidence_is_entered(q_node_t node);

/** Whether the results take evidence on a node into account. errors: as above; q_error_not_compiled;
 *  q_error_no_equilibrium. */
Q_API q_boolean_t q_node_evidence_is_propagated(q_node_t node);

/** Whether the evidence entered on a node differs from the propagated one (NaN differs from everything). errors:
 *  q_error_usage: the node is in no junction tree. */
Q_API q_boolean_t q_node_evidence_to_propagate(q_node_t node);

/** Whether evidence is entered on a node with a weight other than 0 and 1; never on a continuous one. errors:
 *  q_error_usage: a utility or a real-valued function. */
Q_API q_boolean_t q_node_likelihood_is_entered(q_node_t node);

/** The same for the evidence that the results take into account. errors: as q_node_evidence_is_propagated(). */
Q_API q_boolean_t q_node_likelihood_is_propagated(q_node_t node);

/*
 * About one junction tree, or about all trees of a domain. All of these fail with q_error_not_compiled when the domain
 * is not compiled. An excluded node belongs to the tree of q_node_get_junction_tree().
 */

/** Whether the evidence entered on some node differs from the propagated one, or the selected states of excluded nodes
 *  from those that the tables were last cut out for. */
Q_API q_boolean_t q_domain_evidence_to_propagate(q_domain_t domain);
Q_API q_boolean_t q_junction_tree_evidence_to_propagate(q_junction_tree_t tree);

/** Whether the results of some tree take into account: any evidence; weights other than 0 and 1; values of continuous
 *  nodes. */
Q_API q_boolean_t q_domain_evidence_is_propagated(q_domain_t domain);
Q_API q_boolean_t q_junction_tree_evidence_is_propagated(q_junction_tree_t tree);
Q_API q_boolean_t q_domain_likelihood_is_propagated(q_domain_t domain);
Q_API q_boolean_t q_junction_tree_likelihood_is_propagated(q_junction_tree_t tree);
Q_API q_boolean_t q_domain_cg_evidence_is_propagated(q_domain_t domain);
Q_API q_boolean_t q_junction_tree_cg_evidence_is_propagated(q_junction_tree_t tree);

/** Whether every tree is at q_equilibrium_sum or q_equilibrium_max, as asked; any other argument is q_error_usage. */
Q_API q_boolean_t q_domain_equilibrium_is(q_domain_t domain, q_equilibrium_t equilibrium);
Q_API q_boolean_t q_junction_tree_equilibrium_is(q_junction_tree_t tree, q_equilibrium_t equilibrium);

/** Whether every tree was propagated in that mode or holds no evidence. errors: q_error_usage: no such mode;
 *  q_error_no_equilibrium: some tree has nothing propagated yet. */
Q_API q_boolean_t q_domain_evidence_mode_is(q_domain_t domain, q_mode_t mode);
Q_API q_boolean_t q_junction_tree_evidence_mode_is(q_junction_tree_t tree, q_mode_t mode);

/* ------------------------------------------------------------------------------------------------------------------
 * Propagation and results
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * Brings the junction trees in line with the tables and the entered evidence, so that results can be read. A tree in
 * which nothing changed costs nothing; new evidence is multiplied into the tables as they are, and what takes evidence
 * back that excluded something starts again from the tables without evidence. Tables of nodes that are new or were
 * touched are checked, and each distribution in them is divided by its sum, in place.
 *
 * equilibrium  q_equilibrium_sum: beliefs are posterior probabilities [Lauritzen & Spiegelhalter 1988];
 *              q_equilibrium_max: they are probabilities of the most probable configurations [Dawid 1992]
 * mode         q_mode_normal; q_mode_fast_retraction: the belief of a node is that given the evidence on all other nodes
 *              [Cowell & Dawid 1992]. That works as long as no evidence excludes what it does not itself observe;
 *              evidence may contradict itself where each piece is possible given the others.
 *              Anything but sum equilibrium in normal mode needs a domain of discrete chance nodes.
 *
 * In a network with decisions, policies count as the tables of the decisions that are not observed; an observed decision
 * is made, and results are those given it.
 *
 * Function nodes are computed on the way, in the order of dependence (docs/expressions.md). Where a discrete function cannot
 * be, its junction tree is left at no equilibrium; the others are propagated, and the code of the function is returned:
 * q_error_computation_failed, q_error_division_by_zero, q_error_inappropriate_arguments, q_error_invalid_state_values, or
 * q_error_no_equilibrium when it depends on such a tree.
 *
 * errors  q_error_usage; q_error_not_compiled; q_error_compressed: fast retraction in a compressed domain;
 *         q_error_invalid_evidence: an excluded node or a decision has a likelihood, an excluded node is not observed,
 *         or a decision with several states is open while a descendant, reached through chance nodes, is observed;
 *         q_error_invalid_probability_potential: a table holds a negative, infinite or NaN entry (a utility
 *         may be negative), or a distribution whose sum is not positive and finite, or a negative variance;
 *         q_error_chain_graph: the tables of a chain component are 0 for all its states in some configuration of its
 *         parents;
 *         q_error_inconsistency_or_underflow: the evidence is impossible, or contradicts what would otherwise be likely
 *         by more than a double can tell (about 1 to 1e308); q_error_overflow: the same upwards;
 *         q_error_zero_variance: a continuous node has no variance left and the value that it must have was observed, so
 *         that the density is infinite; q_error_low_density: its value is too far out for a density above 0;
 *         q_error_fast_retraction, q_error_normalization: evidence excludes a state of another node, which could not be
 *         taken back fast; q_error_no_memory.
 *         After q_error_usage, _not_compiled, _compressed and _invalid_evidence nothing has changed. After the others the
 *         tree concerned is at sum equilibrium without evidence, all policies taken in (at none with an invalid table,
 *         with excluded nodes that contradict each other, or where there is no memory even for that), trees before it are
 *         propagated and trees after it are as they were. Entered evidence is untouched.
 */
Q_API q_status_t q_domain_propagate(q_domain_t domain, q_equilibrium_t equilibrium, q_mode_t mode);

/**
 * The same for one tree, or for the tree of a clique, with messages that meet in that clique: results differ by rounding
 * only. Anything but sum equilibrium in normal mode needs a tree without continuous nodes in a domain without utilities.
 */
Q_API q_status_t q_junction_tree_propagate(q_junction_tree_t tree, q_equilibrium_t equilibrium,
                                           q_mode_t mode);
Q_API q_status_t q_clique_propagate(q_clique_t clique, q_equilibrium_t equilibrium, q_mode_t mode);

/**
 * Compresses the tables of the junction trees of a propagated domain: they lose the entries of all configurations that
 * cannot occur, and later propagations work on what is left. That pays in networks with many zeros; where there are few,
 * the lists of what the entries belong to can take more memory than is saved, and propagation more time.
 *
 * A configuration can occur when the tables of the chance nodes that are in force now give it a positive probability,
 * however small. What is left out does not come back when tables change later: its probability stays 0, and the rest is
 * divided by its sum. Compiling anew brings it back. Compressing again takes out what has become impossible since.
 *
 * The trees are brought to sum equilibrium without evidence. Entered evidence stays entered, to be propagated again. From
 * then on fast retraction is refused.
 *
 * result  the memory of the tables, including the lists, divided by that before: 1 where nothing can be left out (again)
 * errors  q_error_usage: excluded, continuous or utility nodes, chain components; q_error_not_compiled; q_error_no_equilibrium: not
 *         propagated, or not successfully, in some tree; q_error_table_too_large: positions in some table do not fit into
 *         32 bits; q_error_invalid_probability_potential: nothing is changed then; q_error_no_memory: all trees are
 *         without evidence then, and hold the tables that they held
 */
Q_API q_number_t q_domain_compress(q_domain_t domain);

/*
 * Results are those of the last propagation. Reading them needs a compiled domain (q_error_not_compiled) and an
 * equilibrium in the node's junction tree, for numbers of the domain in all trees (q_error_no_equilibrium: nothing
 * propagated yet, or the tables were invalid). Every function below can fail with these two besides the errors named.
 */

/**
 * Belief of one state of a discrete node.
 *
 * state   0 .. number of states - 1
 * result  at sum equilibrium the probability of the state given the evidence, in [0, 1]; at max equilibrium the
 *         probability of the most probable configuration with this state, the most probable one of all counting 1.
 *         In normal mode 1 for an observed state and 0 for the others of that node, as always for an excluded one;
 *         in fast-retraction mode the evidence is that on all other nodes.
 * errors  q_error_usage: not discrete, no such state
 */
Q_API q_number_t q_node_get_belief(q_node_t node, size_t state);

/** Mean and variance of a continuous node; where a value was observed, that value and 0. errors: q_error_usage: not
 *  continuous. */
Q_API q_number_t q_node_get_mean(q_node_t node);
Q_API q_number_t q_node_get_variance(q_node_t node);

/**
 * Mean and variance of a numbered node over the values of its states, or of an interval node, each state being spread
 * evenly over its interval; a state that reaches to infinity lies at its finite bound.
 *
 * errors  q_error_usage: no such node, not at sum equilibrium, or evidence propagated in fast-retraction mode;
 *         q_error_invalid_state_values: they are not set or not increasing, or the only interval has no finite bound
 */
Q_API q_number_t q_node_get_numeric_mean(q_node_t node);
Q_API q_number_t q_node_get_numeric_variance(q_node_t node);

/**
 * Value of a real-valued function as of the last propagation: of the expression in its model for the states of its model
 * nodes. There a parent stands for: a discrete one that is certainly in one state, this state (label, truth, value, or
 * the middle of the interval); another numbered or interval one, and a continuous one, its mean; a utility, its expected
 * utility; a function, its value. Propagating any tree brings all functions up to date.
 *
 * errors  q_error_usage: another node; q_error_no_equilibrium: not propagated yet, or a tree that the value depends on is
 *         at none; q_error_computation_failed: no model, no expression for the configuration, a model node or a label or
 *         boolean parent that is in no certain state, an argument that has no value, or a number that is not finite;
 *         q_error_division_by_zero; q_error_inappropriate_arguments: outside the domain of an operator;
 *         q_error_invalid_state_values: of a parent
 */
Q_API q_number_t q_node_get_value(q_node_t node);

/**
 * Expected utility of a utility node (state 0), or of its junction tree's utility nodes together given that a discrete
 * node is in a state: 0 for a state that cannot occur. A utility without parents, but excluded ones, goes with the
 * smallest clique.
 *
 * result  in a domain without utility nodes 0; may be -1.0 without failure; NaN for a utility node none of whose parents'
 *         configurations has positive probability
 * errors  q_error_usage: a node of another sort, no such state; without utility nodes also a tree that is not at sum
 *         equilibrium or has evidence propagated in fast-retraction mode
 */
Q_API q_number_t q_node_get_expected_utility(q_node_t node, size_t state);

/** Variance of a utility node, and its least and greatest utility with positive probability. May be -1.0 or NaN likewise.
 *  errors: q_error_usage: no utility node. */
Q_API q_number_t q_node_get_utility_variance(q_node_t node);
Q_API q_number_t q_node_get_utility_minimum(q_node_t node);
Q_API q_number_t q_node_get_utility_maximum(q_node_t node);

/** Sum of the expected utilities of all utility nodes, whose junction trees are all that must be at an equilibrium.
 *  Without any it is 0, with the errors of q_node_get_expected_utility(). */
Q_API q_number_t q_domain_get_expected_utility(q_domain_t domain);

/**
 * Probability of the propagated evidence (of continuous nodes: density); with likelihoods, the expectation of the product
 * of the weights; at max equilibrium the probability of the most probable configuration. 1 without evidence, 0 where it
 * is too small for a double and infinite where it is too large: the logarithm is right there too. It means nothing after
 * a propagation in fast-retraction mode.
 */
Q_API q_number_t q_domain_get_normalization_constant(q_domain_t domain);

/** Natural logarithm of the normalisation constant. 1.0 on failure, with the same errors. */
Q_API q_number_t q_domain_get_log_normalization_constant(q_domain_t domain);

/**
 * Writes the beliefs, expected utilities and values of all nodes to the domain's log, in creation order. Without a log
 * nothing is done, whatever the state of the domain. A node that is certainly in one state has only that state named:
 * by its label; in a numbered or interval node by q_node_get_state_value() of its number (the lower bound of an
 * interval); where there is none by its number.
 *
 * errors  q_error_io, q_error_locale
 */
Q_API q_status_t q_domain_print_beliefs(q_domain_t domain);

/* ------------------------------------------------------------------------------------------------------------------
 * Decisions
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * Improves the policies of all decisions that are open (no evidence, several states), one at a time, until no change of a
 * single one would raise the expected utility of its junction tree [Lauritzen & Nilsson 2001]; then propagates. In each
 * configuration of the decision's parents all weight goes to the optimal states (those whose expected utility is the
 * largest to about 12 digits): the present policy is kept as far as it is optimal, and where nothing of it is, the optimal
 * states share equally. Configurations that cannot occur keep theirs.
 *
 * What is found is a local optimum, never below the present policies. Begun with policies without zeros, it is the best of
 * all where each decision can be settled after those that follow it in time, as in influence diagrams in which nothing
 * that was known is forgotten. Policies are the tables of the decisions (q_node_get_table()); new ones have equal weights.
 *
 * The domain must be propagated in normal mode, with no evidence left to propagate and no table changed since. Without
 * utility nodes nothing is done.
 *
 * errors  q_error_usage: the domain is not as said above; q_error_not_compiled; q_error_no_memory,
 *         q_error_inconsistency_or_underflow: the tree concerned then is as after a failed q_domain_propagate(); policies
 *         that were already updated stay so
 */
Q_API q_status_t q_domain_update_policies(q_domain_t domain);

/**
 * Removes every informational link, from a parent to a decision, that is not requisite: by the links alone (d-separation),
 * what else is known at the decision says all that the parent could tell of the utilities that the decision influences
 * [Lauritzen & Nilsson 2001]. A decision that influences none keeps no parents. The best expected utility stays what it
 * was, policies get smaller, and q_domain_update_policies() may find better ones. Which links remain does not depend on
 * an order of removal.
 *
 * A policy keeps what it holds for state 0 of a parent that is removed, as does a model. Function nodes always remain
 * parents. Evidence is not considered: where more than the parents of decisions is to be observed, a link that was
 * removed could have helped. The domain is uncompiled when a link is removed, and else stays as it is.
 *
 * result  the number of links removed
 */
Q_API size_t q_domain_minimize_limid(q_domain_t domain);

/* ------------------------------------------------------------------------------------------------------------------
 * Files
 * --------------------------------------------------------------------------------------------------------------- */

/**
 * Reads a network in the NET language, or in its older dialect; both are described in docs/net-language.md.
 *
 * source   NET text when it begins with "net {", else the name of a file
 * handler  called with each error and warning; may be null
 * data     passed on to the handler
 * result   a new domain for the caller to delete; null when anything but warnings was reported
 * errors   q_error_io: the file cannot be opened, read or closed; q_error_parse: an error was reported; q_error_locale;
 *          or the code of the operation on nodes that failed, as reported
 */
Q_API q_domain_t q_net_parse_domain(const char* source, q_parse_error_handler_t handler, void* data);

/** The same with a handler that takes no data. */
Q_API q_domain_t q_net_parse_domain_plain(const char* source, q_parse_error_plain_handler_t handler);

/**
 * Writes a network to a file in the NET language. Reading it gives the same network, nodes in order of creation, with
 * numbers rounded to eight significant digits and the parents of each node ordered by kind: discrete nodes first,
 * real-valued functions last. Nodes without names get them. Evidence, settings and user data are not written.
 *
 * path    a file there is replaced, with its permissions, once the new one is complete: that takes the right to make
 *         files in its folder. Devices and pipes are written to directly
 * errors  q_error_io: nothing is left behind, an old file is as it was; q_error_invalid_probability_potential: a number in
 *         a table is infinite or NaN; q_error_invalid_state_values: a state value is NaN; q_error_invalid_expression: an
 *         expression in a model does not suit any more, as a node has changed its subtype or category; q_error_locale
 */
Q_API q_status_t q_domain_save_as_net(q_domain_t domain, const char* path);

/** What q_domain_save_as_net() writes, as a text for the caller to free with q_string_delete(). errors: the same. */
Q_API char* q_domain_to_net(q_domain_t domain);

/**
 * Writes the entered evidence as a case file: a line "NAME: FINDING" for each node with evidence, newest first, followed
 * by a tab, "% " and the label of the node if it has one. Nodes without a name get one. The finding is
 *
 *   - the value of a continuous node, with eight significant digits,
 *   - the weights of a likelihood in parentheses, with six,
 *   - else what the state is called: true or false (boolean nodes), the label in quotes (labelled nodes, when it is not
 *     empty and no other state has it), the value with eight digits (numbered nodes with valid values), or "#" and the
 *     index.
 *
 * A node that is linked to another one is written as that one. What the digits do not tell is lost: of state values that
 * differ by less than a millionth the first one is read back.
 *
 * errors  q_error_usage; q_error_io: the file cannot be opened or written, and then is incomplete; q_error_locale;
 *         q_error_no_memory: the file is as it was
 */
Q_API q_status_t q_domain_save_case(q_domain_t domain, const char* path);

/**
 * Replaces the entered evidence by that in a case file, and propagates nothing. Entries are "NAME: FINDING" in any
 * layout and order, with names, numbers, strings and comments as in the NET language. A finding is
 *
 *   label or "label"  of a labelled node: the only state with this label
 *   true, false       of a boolean node
 *   NUMBER            the value of a continuous node; of a numbered or interval node the state of
 *                     q_node_get_state_index_from_value()
 *   #INDEX            the state of any discrete node
 *   (W W ...)         a likelihood: a weight for each state of any discrete node
 *
 * handler  called with each message and its line; may be null
 * data     passed on to the handler
 * errors   q_error_io: the file cannot be opened, read or closed; q_error_parse: something was reported, warnings
 *          included; q_error_locale; q_error_no_memory; or the code of the function for evidence that failed, as reported.
 *          When a file that could be opened is not read there is no evidence afterwards.
 */
Q_API q_status_t q_domain_parse_case(q_domain_t domain, const char* path, q_parse_error_handler_t handler,
                                     void* data);

/* ------------------------------------------------------------------------------------------------------------------
 * Random numbers and sampling
 *
 * Every domain has a generator of its own, so that what is drawn does not depend on other domains, threads or the number
 * of threads: the same seed and the same calls give the same numbers. It is the lagged Fibonacci generator with lags 100
 * and 37, modulo 1 [Knuth 1997, section 3.6], of which 100 of every 1009 numbers are used. Not for cryptography.
 * --------------------------------------------------------------------------------------------------------------- */

/** Starts the generator anew; the low 30 bits of the seed count. A new domain has the seed 310952. errors: q_error_usage */
Q_API q_status_t q_domain_seed_random(q_domain_t domain, uint32_t seed);

/** The next number, evenly distributed over [0, 1). errors: q_error_usage, with -1.0 */
Q_API q_number_t q_domain_get_uniform_random(q_domain_t domain);

/**
 * The next number of a normal distribution, by the ratio of uniform numbers [Kinderman & Monahan 1977]. With a variance of
 * 0 it is the mean, and the generator stays where it is.
 *
 * errors  q_error_usage, with -1.0: a null domain, or a variance that is not at least 0
 */
Q_API q_number_t q_domain_get_normal_random(q_domain_t domain, q_number_t mean, q_number_t variance);

/**
 * Draws a configuration of all nodes, which the functions below tell.
 *
 * A compiled domain draws from the distribution of all nodes given the propagated evidence, clique by clique; open
 * decisions are drawn from their policies. It must be at sum equilibrium, its entered evidence propagated, in normal mode
 * where there is any.
 *
 * Another domain draws each node given its parents, from the tables of the nodes as they are, decisions from their
 * policies; a discrete function has the table that the last propagation left it. Rows need not sum to 1. Decisions that
 * are made (q_node_select_state()) keep their states, no other evidence may be entered: compile and propagate to sample
 * given evidence.
 *
 * Utilities and real-valued functions are worked out for the configuration; there a parent stands for its state (an interval
 * for its middle), its value or utility. What keeps a function from having a value is told when that is asked for.
 *
 * The first call after a compilation or a change of the structure makes a plan; the others allocate nothing but for
 * functions. After a failed call, or a change of nodes, states or links, no configuration is drawn, unless it concerns
 * real-valued functions only. Where a call fails the generator stays where it was.
 *
 * errors  not compiled: q_error_invalid_probability_potential: a negative or infinite number, or zeros only, in a row that
 *         was come to, or a negative or infinite number in any table of nodes with undirected links; q_error_chain_graph:
 *         these have no possible configuration, for some configuration of their parents. Compiled: q_error_no_equilibrium;
 *         q_error_inconsistency_or_underflow: what is left of the probabilities has underflowed; q_error_table_too_large:
 *         a compressed table with 2^32 entries or more. Both: q_error_usage: evidence or equilibrium other than said above;
 *         q_error_computation_failed: a value that is not finite; q_error_no_memory; q_error_size_too_large
 * cost    not compiled: linear in the number of links, in the rows that are come to and in the own tables of nodes with
 *         undirected links. Compiled: in each clique the entries that agree with what was drawn before, half of them at
 *         most; of a root the square root of its size, after all of it in the first draw after a propagation
 */
Q_API q_status_t q_domain_simulate(q_domain_t domain);

/** The state drawn for a discrete node. errors: q_error_usage, with -1: another node, or no configuration is drawn */
Q_API int64_t q_node_get_sampled_state(q_node_t node);

/**
 * The value of a continuous node or a real-valued function in the configuration drawn.
 *
 * errors  with -1.0: q_error_usage: another node, no configuration is drawn, or a function that was created since; of
 *         functions also those of q_node_get_value() but q_error_no_equilibrium
 */
Q_API q_number_t q_node_get_sampled_value(q_node_t node);

/** The utility of the configuration drawn. errors: q_error_usage, with -1.0: another node, or no configuration is drawn */
Q_API q_number_t q_node_get_sampled_utility(q_node_t node);

/**
 * The natural logarithm of the probability of the states drawn for the discrete nodes: compiled domains, given the propagated
 * evidence; others, given the decisions made. Values of continuous nodes do not count.
 *
 * errors  q_error_usage, with 1.0: no configuration is drawn
 */
Q_API q_number_t q_domain_get_sampled_log_probability(q_domain_t domain);

#ifdef __cplusplus
}
#endif

#endif
