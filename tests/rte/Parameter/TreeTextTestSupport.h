#pragma once
// Helpers of the parameter tree text tests: a tree using every feature, and a deep comparison.

#include <RTE/Parameter/Factory.h>

#include <gtest/gtest.h>

#include <string>

namespace TreeTextTest {

// Every node kind and attribute, strings with characters that need escaping, extreme numbers.
boost::shared_ptr<RTE::Parameter::C_Tree> MakeRichTree();

std::string ToText(const RTE::Parameter::C_Tree& tree);
boost::shared_ptr<RTE::Parameter::C_Tree> FromText(const std::string& text, const QString& source = "test");

// Compares names, kinds, every attribute, values (doubles by bits), entries, selection, children.
void ExpectSameNode(const RTE::Parameter::C_Node& expected, const RTE::Parameter::C_Node& actual,
                    const QString& path = QString());
void ExpectSameTree(const RTE::Parameter::C_Tree& expected, const RTE::Parameter::C_Tree& actual);

} // namespace TreeTextTest
