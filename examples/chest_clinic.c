/*
 * Builds the chest clinic network of Lauritzen and Spiegelhalter (1988), learns of a patient who has been to Asia and
 * is short of breath, and prints what that makes of everything else. chest_clinic.net is the same network as text.
 */
#include <stdio.h>
#include <stdlib.h>

#include <quarn.h>

enum { asia, smoking, tuberculosis, cancer, bronchitis, either, xray, dyspnoea, node_count };

/* State 0 is yes, state 1 no. */
enum { yes, no };

struct variable {
    const char* name;
    const char* label;
    int parents[2];  /* -1: none */
    double table[8]; /* for each configuration of the parents, the last one varying fastest: yes, no */
};

static const struct variable variables[node_count] = {
    {"asia", "Visit to Asia", {-1, -1}, {0.01, 0.99}},
    {"smoking", "Smoker", {-1, -1}, {0.5, 0.5}},
    {"tuberculosis", "Tuberculosis", {asia, -1}, {0.05, 0.95, 0.01, 0.99}},
    {"cancer", "Lung cancer", {smoking, -1}, {0.1, 0.9, 0.01, 0.99}},
    {"bronchitis", "Bronchitis", {smoking, -1}, {0.6, 0.4, 0.3, 0.7}},
    {"either", "Tuberculosis or cancer", {tuberculosis, cancer}, {1, 0, 1, 0, 1, 0, 0, 1}},
    {"xray", "Positive X-ray", {either, -1}, {0.98, 0.02, 0.05, 0.95}},
    {"dyspnoea", "Dyspnoea", {either, bronchitis}, {0.9, 0.1, 0.7, 0.3, 0.8, 0.2, 0.1, 0.9}},
};

/* A program of its own need not go on after a failure; the system takes back what is open. */
static void check(q_status_t status) {
    if (status == q_error_none) return;
    fprintf(stderr, "%s\n", q_error_description((uint32_t)status));
    exit(EXIT_FAILURE);
}

/* For functions that do not return a status. */
static void check_last(void) { check(q_error_code()); }

static q_node_t add_node(q_domain_t domain, const struct variable* variable) {
    q_node_t node = q_domain_new_node(domain, q_category_chance, q_kind_discrete);
    check_last();
    check(q_node_set_name(node, variable->name));
    check(q_node_set_label(node, variable->label));
    check(q_node_set_number_of_states(node, 2));
    check(q_node_set_state_label(node, yes, "yes"));
    check(q_node_set_state_label(node, no, "no"));
    return node;
}

/* With its parents added first, the table of a node has the order in which `variables` gives it. */
static void add_links_and_table(q_node_t* nodes, int child) {
    const struct variable* variable = &variables[child];
    q_table_t table;
    q_number_t* data;
    size_t size, i;

    for (i = 0; i < 2 && variable->parents[i] >= 0; ++i)
        check(q_node_add_parent(nodes[child], nodes[variable->parents[i]]));
    table = q_node_get_table(nodes[child]);
    check_last();
    data = q_table_get_data(table);
    check_last();
    size = q_table_get_size(table);
    for (i = 0; i < size; ++i) data[i] = variable->table[i];
    check(q_node_touch_table(nodes[child]));
}

static void print_beliefs(q_node_t* nodes) {
    int i;
    for (i = 0; i < node_count; ++i) {
        q_number_t belief = q_node_get_belief(nodes[i], yes);
        check_last();
        printf("%-24s %.4f\n", q_node_get_label(nodes[i]), belief);
    }
}

int main(void) {
    q_node_t nodes[node_count];
    q_number_t probability;
    int i;
    q_domain_t domain = q_domain_new();
    check_last();
    for (i = 0; i < node_count; ++i) nodes[i] = add_node(domain, &variables[i]);
    for (i = 0; i < node_count; ++i) add_links_and_table(nodes, i);
    check(q_domain_compile(domain));

    check(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal));
    printf("Before anything is known:\n");
    print_beliefs(nodes);

    check(q_node_select_state(nodes[asia], yes));
    check(q_node_select_state(nodes[dyspnoea], yes));
    check(q_domain_propagate(domain, q_equilibrium_sum, q_mode_normal));
    probability = q_domain_get_normalization_constant(domain);
    check_last();
    printf("\nAfter a visit to Asia, with dyspnoea (probability %.6f):\n", probability);
    print_beliefs(nodes);

    check(q_domain_delete(domain));
    return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
