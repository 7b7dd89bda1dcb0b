// velloran-accuracy: draws pages of known truth, lets the automatic steps search them, and tells
// how far what they find lies from the truth, and what their confidence is worth.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "samples/Accuracy.h"

namespace {

using namespace velloran::samples;

struct Options {
    int share = 1;
    std::uint64_t seed = 1;
    std::string group;
    bool verbose = false;
};

double Quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * double(values.size() - 1))];
}

double Percent(std::size_t part, std::size_t whole) {
    return whole == 0 ? 0 : 100.0 * double(part) / double(whole);
}

/// Scores of one row of the table, and how they are told.
void PrintRows(const std::vector<AccuracyScore>& scores) {
    fmt::print(
        "| finding | on | pages | tolerance | median | 95 % | within | wanted |\n"
        "|---|---|---|---|---|---|---|---|\n");
    for (int i = 0; i < kAccuracyRows; ++i) {
        const AccuracyRowText& text = TextOf(static_cast<AccuracyRow>(i));
        std::vector<double> errors;
        std::size_t good = 0;
        for (const AccuracyScore& score : scores)
            if (score.row && static_cast<int>(*score.row) == i) {
                errors.push_back(score.error);
                good += score.isGood ? 1 : 0;
            }
        if (errors.empty())
            continue;
        fmt::print("| {} | {} | {} | {:g} {} | {:.3g} | {:.3g} | {:.1f} % | {:g} % |\n",
                   text.finding, text.pages, errors.size(), text.tolerance * text.scale, text.unit,
                   Quantile(errors, 0.5) * text.scale, Quantile(errors, 0.95) * text.scale,
                   Percent(good, errors.size()), text.wantedPercent);
    }
}

/// The findings that are no good, by what is hard about their pages.
void PrintMisses(const std::vector<AccuracyScore>& scores) {
    std::map<std::string, std::pair<std::size_t, std::size_t>> groups;
    for (const AccuracyScore& score : scores)
        if (score.row) {
            auto& [all, bad] = groups[score.finding + " | " + score.group];
            ++all;
            bad += score.isGood ? 0 : 1;
        }
    fmt::print("\n| finding | pages | outside tolerance | of |\n|---|---|---|---|\n");
    for (const auto& [name, counts] : groups)
        if (counts.second > 0)
            fmt::print("| {} | {} | {} |\n", name, counts.second, counts.first);
}

/// What a confidence is worth: over all findings the share of the wrong ones below the value that
/// nine tenths of the good ones reach, and for each tenth the share of good ones at or above it.
void PrintSure(const std::vector<AccuracyScore>& scores) {
    std::vector<double> good, bad;
    std::map<std::string, std::vector<std::pair<double, bool>>> byFinding;
    for (const AccuracyScore& score : scores) {
        if (!score.sure)
            continue;
        (score.isGood ? good : bad).push_back(*score.sure);
        byFinding[score.finding].emplace_back(*score.sure, score.isGood);
    }
    if (good.empty() || bad.empty())
        return;
    const double bar = Quantile(good, 0.1);
    const auto below = std::count_if(bad.begin(), bad.end(), [&](double s) { return s < bar; });
    fmt::print(
        "\nNine tenths of the {} good findings are at least {:.3f} sure; of the {} wrong ones "
        "and those where nothing is to be found {:.1f} % lie below.\n",
        good.size(), bar, bad.size(), Percent(static_cast<std::size_t>(below), bad.size()));
    fmt::print("\n| good at or above | 0.0 |");
    for (int tenth = 1; tenth < 10; ++tenth)
        fmt::print(" 0.{} |", tenth);
    fmt::print("\n|---|");
    for (int tenth = 0; tenth < 10; ++tenth)
        fmt::print("---|");
    for (const auto& [finding, sures] : byFinding) {
        fmt::print("\n| {} |", finding);
        for (int tenth = 0; tenth < 10; ++tenth) {
            std::size_t all = 0, right = 0;
            for (const auto& [sure, isGood] : sures)
                if (sure >= tenth / 10.0) {
                    ++all;
                    right += isGood ? 1 : 0;
                }
            if (all == 0)
                fmt::print(" - |");
            else
                fmt::print(" {:.0f} % of {} |", Percent(right, all), all);
        }
    }
    fmt::print("\n");
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures what the automatic steps find on pages of known truth.",
                 "velloran-accuracy");
    Options options;
    app.add_option("--share", options.share, "Every n-th page of the whole")->capture_default_str();
    app.add_option("--seed", options.seed, "Another seed gives other pages")->capture_default_str();
    app.add_option("--group", options.group, "Only pages of this group");
    app.add_flag("-v,--verbose", options.verbose, "A line a finding");
    CLI11_PARSE(app, argc, argv);
    std::vector<AccuracyScore> scores;
    std::size_t pages = 0;
    for (const CorpusPage& page : AccuracyCorpus(options.seed, options.share)) {
        if (!options.group.empty() && page.group != options.group)
            continue;
        ++pages;
        for (AccuracyScore& score : ScorePage(page)) {
            if (options.verbose)
                fmt::print("{}\t{}\tdpi {}\tangle {:.2f}\terror {:.5f}\t{}\tsure {:.3f}\n",
                           score.finding, score.group, page.request.dpi,
                           page.request.angleDegrees.value_or(0), score.error,
                           score.isGood ? "good" : (score.row ? "BAD" : "nothing"),
                           score.sure.value_or(-1));
            scores.push_back(std::move(score));
        }
        std::fflush(stdout);
    }
    fmt::print("{} pages, seed {}.\n\n", pages, options.seed);
    PrintRows(scores);
    PrintMisses(scores);
    PrintSure(scores);
}
