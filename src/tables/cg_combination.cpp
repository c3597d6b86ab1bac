#include "cg_combination.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "cg_conditioning.h"
#include "errors.h"

namespace quarn {
namespace {

using positions = std::vector<std::size_t>;  // of continuous nodes in the target

// Some of the heads of one of the two tables, in the order in which the joint distribution is put together.
struct piece {
    bool from_source;
    positions given;  // the heads of its own table that came before
    positions known;  // all that came before
    positions heads;
};

// One of the two tables, seen with the positions of the target.
struct operand {
    std::vector<cg_role> roles;
    const table* numbers;
    positions place;  // of its own continuous nodes

    bool is(cg_role role, std::size_t i) const noexcept { return roles[i] == role; }
    positions heads() const {
        positions found;
        for (std::size_t i = 0; i < roles.size(); ++i)
            if (is(cg_role::head, i)) found.push_back(i);
        return found;
    }
};

operand seen_from(const table& target, const table& numbers, const positions& place) {
    operand seen{std::vector<cg_role>(target.continuous_count(), cg_role::unknown), &numbers, place};
    for (std::size_t i = 0; i < place.size(); ++i) seen.roles[place[i]] = numbers.roles[i];
    return seen;
}

// Whether a head of an operand depends on some of these nodes in any configuration.
bool depends(const operand& asked, std::size_t head, const positions& nodes) {
    const auto own = [&](std::size_t i) {
        return static_cast<std::size_t>(std::ranges::find(asked.place, i) - asked.place.begin());
    };
    return std::ranges::any_of(nodes, [&](std::size_t node) {
        if (!asked.is(cg_role::tail, node)) return false;
        const std::size_t coefficient = cg_covariance(own(head), own(node)),
                          block = asked.numbers->block_size();
        for (std::size_t i = 0; i < asked.numbers->size; ++i)
            if (!(asked.numbers->moments[i * block + coefficient] == 0)) return true;
        return false;
    });
}

// The pieces in the order in which they can be put together; fails when there is none.
std::vector<piece> arrange(const operand& target, const operand& source) {
    const operand* const operands[] = {&target, &source};
    positions left[] = {target.heads(), source.heads()};
    positions given[2], known;
    std::vector<piece> pieces;
    std::size_t turns_without_piece = 0;
    for (bool turn = false; !left[0].empty() || !left[1].empty(); turn = !turn) {
        piece next{turn, given[turn], known, {}};
        positions later;
        for (const std::size_t head : left[turn])
            (depends(*operands[turn], head, left[!turn]) ? later : next.heads).push_back(head);
        turns_without_piece = next.heads.empty() ? turns_without_piece + 1 : 0;
        require(turns_without_piece < 2);
        if (next.heads.empty()) continue;
        left[turn] = later;
        given[turn].insert(given[turn].end(), next.heads.begin(), next.heads.end());
        known.insert(known.end(), next.heads.begin(), next.heads.end());
        pieces.push_back(std::move(next));
    }
    return pieces;
}

// Puts the blocks of one configuration together.
class block_combination {
public:
    block_combination(const operand& target, const operand& source, const std::vector<piece>& pieces,
                      const std::vector<cg_role>& roles) noexcept
        : target_(target), source_(source), pieces_(pieces), roles_(roles), nodes_(roles.size()) {}

    std::size_t scratch() const noexcept { return 2 * cg_block_size(nodes_) + nodes_; }

    // The joint block replaces that of the target.
    void operator()(double* target_block, const double* source_block, double* scratch) const noexcept {
        double* const joint = scratch;
        double* const part = joint + cg_block_size(nodes_);
        double* const variances = part + cg_block_size(nodes_);
        std::fill_n(joint, cg_block_size(nodes_), 0.0);
        for (const piece& next : pieces_) {
            const operand& from = next.from_source ? source_ : target_;
            spread(from, next.from_source ? source_block : target_block, part);
            if (!next.given.empty()) condition_block(part, from.roles, next.given, variances);
            append(next, part, joint);
        }
        std::copy_n(joint, cg_block_size(nodes_), target_block);
    }

private:
    // A block with the positions of the target.
    void spread(const operand& from, const double* block, double* part) const noexcept {
        std::fill_n(part, cg_block_size(nodes_), 0.0);
        for (std::size_t i = 0; i < from.place.size(); ++i) {
            part[cg_mean(from.place[i])] = block[cg_mean(i)];
            for (std::size_t j = 0; j <= i; ++j)
                part[cg_covariance(from.place[i], from.place[j])] = block[cg_covariance(i, j)];
        }
    }

    // In `part` the heads that are known already are tails, or do not occur.
    void append(const piece& added, const double* part, double* joint) const noexcept {
        for (const std::size_t h : added.heads) {
            joint[cg_mean(h)] = part[cg_mean(h)];
            for (std::size_t t = 0; t < nodes_; ++t)
                if (roles_[t] == cg_role::tail) joint[cg_covariance(h, t)] = part[cg_covariance(h, t)];
            for (const std::size_t k : added.known) {
                const double coefficient = part[cg_covariance(h, k)];
                joint[cg_mean(h)] += coefficient * joint[cg_mean(k)];
                for (std::size_t t = 0; t < nodes_; ++t)
                    if (roles_[t] == cg_role::tail)
                        add(joint[cg_covariance(h, t)], coefficient * joint[cg_covariance(k, t)]);
                for (const std::size_t other : added.known)
                    add(joint[cg_covariance(h, other)], coefficient * joint[cg_covariance(k, other)]);
            }
            for (const std::size_t other : added.heads) {
                double& result = joint[cg_covariance(h, other)];
                result = part[cg_covariance(h, other)];
                for (const std::size_t k : added.known)
                    add(result, part[cg_covariance(h, k)] * joint[cg_covariance(k, other)]);
                if (other == h) break;
            }
        }
    }

    static void add(double& to, double added) noexcept { to = sum_without_rounding(to, added); }

    const operand& target_;
    const operand& source_;
    const std::vector<piece>& pieces_;
    const std::vector<cg_role>& roles_;
    std::size_t nodes_;
};

std::vector<cg_role> joint_roles(const operand& target, const operand& source) {
    std::vector<cg_role> roles(target.roles.size(), cg_role::unknown);
    for (std::size_t i = 0; i < roles.size(); ++i) {
        const auto either = [&](cg_role role) { return target.is(role, i) || source.is(role, i); };
        require(!(target.is(cg_role::head, i) && source.is(cg_role::head, i)));
        if (either(cg_role::tail)) roles[i] = cg_role::tail;
        if (either(cg_role::head)) roles[i] = cg_role::head;
    }
    return roles;
}

}  // namespace

void cg_combine(const cg_plan& plan, table& target, const table& source, const workers& allowed) {
    positions own(target.continuous_count());
    std::iota(own.begin(), own.end(), std::size_t{0});
    const operand into = seen_from(target, target, own), from = seen_from(target, source, plan.positions);
    std::vector<cg_role> roles = joint_roles(into, from);
    const std::vector<piece> pieces = arrange(into, from);
    const block_combination combine(into, from, pieces, roles);
    const std::size_t block = target.block_size(), source_block = source.block_size();
    run_kept(plan, block * (target.continuous_count() + 1), combine.scratch(), allowed,
             [&](std::size_t first, std::size_t by, double* scratch) noexcept {
                 walk(plan.loops.removed, first, 0, [&](std::size_t to, std::size_t) noexcept {
                     target.data[to] *= source.data[by];
                     combine(target.moments.data() + to * block, source.moments.data() + by * source_block,
                             scratch);
                 });
             });
    target.roles.swap(roles);
}

}  // namespace quarn
