// Eight threads that use all of the library at once, each on domains of its own.
#include <future>

#include "../same_bits/transcript.h"
#include "node_models.h"
#include "texts.h"

namespace {

// Chain components, continuous nodes and functions.
const char* const mixed = R"(net {}
node A { states = ("a" "b"); } node B { subtype = boolean; } continuous node X {} continuous node Y {}
node N { subtype = number; states = ("" "" ""); state_values = (0 1.5 4); } function F {} function G {}
discrete function D { subtype = interval; states = ("" ""); state_values = (-infinity 1 infinity); }
potential (N) { data = (1 2 3); } potential (A B | N) { data = ((.1 .2 .3 .4) (.4 .3 .2 .1) (1 0 0 1)); }
potential (X | A) { data = (normal(1, 2) normal(-1, .5)); }
potential (Y | A X) { data = (normal(X, 1) normal(2 - 3 * X, .1)); }
potential (F | A N X Y) { model_nodes = (A); model_data = (sin(X) + N, quantile(Y, .3) / probability(N > 1)); }
potential (G | F) { model_nodes = (); model_data = (log(F)); }
potential (D | F) { model_nodes = (); model_data = (F ^ 2); })";

// A network that is built by calls, among them some that fail, as NET text.
std::string built(transcript& told) {
    const owned_domain domain(q_domain_new());
    const q_node_t seen = new_numeric(domain.get(), "S", q_subtype_number, {1, 2, 4}, {.5, .3, .2});
    const q_node_t forecast = with_table(new_chance(domain.get(), "E", 2, {seen}), {.9, .1, .4, .6, 0, 1});
    const q_node_t choice = new_chance(domain.get(), "C", 3, {forecast}, "dd");
    with_table(new_chance(domain.get(), "U", 0, {seen, choice}, "uo"), {0, 1, 2, 3, 4, 5, 6, 7, -8});
    const q_node_t cost = new_chance(domain.get(), "F", 0, {seen}, "fo");
    give_model(cost, "S", {"-S ^ 2 / 3", "max(S, #S, 1e-3)", "if(S == 4, sqrt(S), 7)"});
    told.tell(model_of(cost).c_str());
    for (int times = 0; times < 50; ++times) {
        told.tell_result(q_node_select_state(seen, 99));
        told.tell_result(q_node_add_parent(seen, choice));
        told.tell_result(q_node_add_parent(seen, forecast));
        told.tell_result(q_node_get_belief(seen, 0));
        told.tell_result(q_domain_save_as_net(domain.get(), "/none/at/all") == 0);
        told.tell_result(q_net_parse_domain("net { broken", transcript::hear, &told) == nullptr);
        told.tell_result(parsed(domain.get(), "1 + * 2") == nullptr);
        told.tell_result(q_node_set_name(seen, "no name") == 0);
        told.tell(q_error_description(uint32_t(q_error_code())));
    }
    return written(domain.get());
}

std::string use_everything(unsigned seed) {
    const transcript::manner manner{seed, 1 + seed % 3,
                                    testing::TempDir() + "threads_" + std::to_string(seed)};
    transcript built_first;
    std::string all, network = built(built_first);
    all += built_first.text();
    for (const char* name : {"car_insurance", "chest_clinic", "oil_wildcatter", "waste_incinerator"})
        all += transcript(std::string(QUARN_SOURCE_DIR "/examples/") + name + ".net", manner).text();
    for (const std::string& text : {network, std::string(mixed)}) all += transcript(text, manner).text();
    return all;
}

TEST(threads, say_at_once_what_each_says_alone) {
    std::vector<std::string> alone;
    for (unsigned seed = 0; seed < 8; ++seed) alone.push_back(use_everything(seed));
    std::vector<std::future<std::string>> at_once;
    for (unsigned seed = 0; seed < 8; ++seed)
        at_once.push_back(std::async(std::launch::async, use_everything, seed));
    for (unsigned seed = 0; seed < 8; ++seed) EXPECT_TRUE(at_once[seed].get() == alone[seed]) << seed;
}

}  // namespace
