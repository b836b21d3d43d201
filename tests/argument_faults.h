// SPDX-License-Identifier: Apache-2.0
// Whether a function finds what is wrong with its arguments, one after the other.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <tuple>
#include <type_traits>
#include <vector>

#include "qeljx.h"

namespace qel::test {

// Values that argument kIndex (from 0) may not have, and the status that says so.
template <size_t kIndex, class Value> struct ArgumentFault {
    QelStatus status;
    std::vector<Value> values;

    template <class Arguments> void put(size_t i, Arguments& arguments) const
    {
        if constexpr (requires { std::get<kIndex>(arguments) = values[i]; })
            std::get<kIndex>(arguments) = values[i];
        else
            std::get<kIndex>(arguments) = values[i].data();
    }
};

template <size_t kIndex> const ArgumentFault<kIndex, std::nullptr_t> null = {qelStsNullPtrErr, {nullptr}};
template <size_t kIndex> const ArgumentFault<kIndex, int> step = {qelStsStepErr, {0, -1}};
template <size_t kIndex> const ArgumentFault<kIndex, int> length = {qelStsSizeErr, {0, -1}};
template <size_t kIndex>
const ArgumentFault<kIndex, QelSize> size = {qelStsSizeErr, {{0, 1}, {1, 0}, {-1, 1}, {1, -1}}};

template <size_t kIndex, class... Values> auto wrong(QelStatus status, Values... values)
{
    return ArgumentFault<kIndex, std::common_type_t<Values...>>{status, {values...}};
}
template <size_t kIndex, class... Values> auto bad(Values... values)
{
    return wrong<kIndex>(qelStsBadArgErr, values...);
}

// Pointers of which one is null.
template <size_t kIndex, class Pointers> auto nullAmong(const Pointers& pointers)
{
    using Some = std::vector<std::remove_cvref_t<decltype(pointers[0])>>;
    ArgumentFault<kIndex, Some> fault = {qelStsNullPtrErr, {}};
    for (size_t missing = 0; missing < std::size(pointers); ++missing) {
        Some& some = fault.values.emplace_back(std::begin(pointers), std::end(pointers));
        some[missing] = nullptr;
    }
    return fault;
}

template <class Arguments> Arguments spoilt(const Arguments& good) { return good; }
template <class Arguments, class First, class... Rest>
Arguments spoilt(const Arguments& good, const First& first, const Rest&... rest)
{
    Arguments arguments = spoilt(good, rest...);
    first.put(0, arguments);
    return arguments;
}

template <class Function, class Arguments> void expectOrder(Function, const Arguments&) {}
template <class Function, class Arguments, class First, class... Rest>
void expectOrder(Function function, const Arguments& good, const First& first, const Rest&... rest)
{
    for (size_t i = 0; i < first.values.size(); ++i)
        for (Arguments arguments : {good, spoilt(good, rest...)}) {
            first.put(i, arguments);
            EXPECT_EQ(std::apply(function, arguments), first.status)
                << sizeof...(rest) << " faults come after it, " << i;
        }
    expectOrder(function, good, rest...);
}

// Calls the function with arguments that are good but for one fault, and with all faults from that one on: the faults
// are listed in the order in which they are found.
template <class... Parameters, class... Faults>
void expectFaults(QelStatus (*function)(Parameters...), const std::type_identity_t<std::tuple<Parameters...>>& good,
                  const Faults&... inOrder)
{
    expectOrder(function, good, inOrder...);
}
template <class... Parameters, class... Faults>
void expectFaults(const std::function<QelStatus(Parameters...)>& function,
                  const std::type_identity_t<std::tuple<Parameters...>>& good, const Faults&... inOrder)
{
    expectOrder(function, good, inOrder...);
}

}
