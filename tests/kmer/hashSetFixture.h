// What the tests of the hash set share: sets that free themselves, entities, invariants.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "kmer/hashSet.h"

namespace velk::test {

/// A hash set that is released at the end of its life.
using OwnSet = std::unique_ptr<velk::HashSet, int (*)(velk::HashSet*)>;

OwnSet makeSet(uint64_t initSize, float loadFactor);

/// An entity of this key, added once; the place's fields are set apart by `place`.
Entity entityOf(uint64_t key, unsigned place = 0);

/// Whether both entities have the same key, place and `unique` bit.
bool sameEntity(const Entity& one, const Entity& other);

/// What `action` writes to std::cerr.
std::string messagesOf(const std::function<void()>& action);

/// Adds the entity. Returns what that writes to std::cerr.
std::string add(const OwnSet& set, const Entity& entity);

/// The entity of `key`; the sentinel when it is missing.
const Entity& find(const OwnSet& set, uint64_t key);

/// The first of the set's invariants that does not hold; empty when all do.
std::string brokenInvariant(const velk::HashSet& set);

}  // namespace velk::test
