"""Compares what quarn batch wrote with what the library computes for each case from nothing but that case.

usage: batch_answers.py LIBRARY MODEL CASES ANSWERS

Every case gets a propagation that starts again from the tables without evidence: a state that is observed and taken back
before makes it do so. Prints the largest difference of a belief or of log_p. For networks of discrete nodes whose cases
have labels.
"""
import csv
import ctypes
import sys

SUM, NORMAL = 11, 20


def declare(library, name, result, *arguments):
    function = getattr(library, "q_" + name)
    function.restype, function.argtypes = result, arguments
    return function


def main(library_path, model, cases_path, answers_path):
    library = ctypes.CDLL(library_path)
    handle, text, number = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_double
    parse = declare(library, "net_parse_domain", handle, text, handle, handle)
    compile_domain = declare(library, "domain_compile", ctypes.c_int32, handle)
    find = declare(library, "domain_get_node_by_name", handle, handle, text)
    state_of = declare(library, "node_get_state_index_from_label", ctypes.c_int64, handle, text)
    select = declare(library, "node_select_state", ctypes.c_int32, handle, ctypes.c_size_t)
    retract = declare(library, "domain_retract_findings", ctypes.c_int32, handle)
    propagate = declare(library, "domain_propagate", ctypes.c_int32, handle, ctypes.c_int32, ctypes.c_int32)
    belief = declare(library, "node_get_belief", number, handle, ctypes.c_size_t)
    log_p = declare(library, "domain_get_log_normalization_constant", number, handle)

    domain = parse(model.encode(), None, None)
    if not domain or compile_domain(domain) != 0:
        sys.exit(f"{model}: cannot be used")
    largest = 0.0
    count = 0
    with open(cases_path, newline="") as cases, open(answers_path, newline="") as answers:
        cases, answers = csv.reader(cases), csv.reader(answers)
        nodes = [find(domain, name.encode()) for name in next(cases)]
        wanted = []
        for name in next(answers)[:-2]:
            node, state = name.split("=", 1)
            node = find(domain, node.encode())
            wanted.append((node, int(state[1:]) if state.startswith("#") else state_of(node, state.encode())))
        for case, answer in zip(cases, answers, strict=True):
            retract(domain)
            propagate(domain, SUM, NORMAL)
            for node, label in zip(nodes, case):
                if label:
                    select(node, state_of(node, label.encode()))
            if propagate(domain, SUM, NORMAL) != 0 or answer[-1]:
                sys.exit(f"case {count + 1}: {answer[-1] or 'impossible'}")
            computed = [belief(node, state) for node, state in wanted] + [log_p(domain)]
            largest = max(largest, *(abs(a - float(b)) for a, b in zip(computed, answer[:-1], strict=True)))
            count += 1
    print(f"{count} cases, largest difference {largest:.3g}")
    if largest > 1e-12:
        sys.exit(1)


if __name__ == "__main__":
    main(*sys.argv[1:])
