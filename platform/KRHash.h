#pragma once

#include <cstddef>
#include <cstdint>

/// Seeded hashing of bytes. The seed is drawn once per process, so that no file can be written whose values collide;
/// for the same reason no order that anyone sees may depend on a hash.
///
/// Thread-safe.
uint64_t krHashBytes(const void* bytes, size_t size) noexcept;

/// Mixes a further hash or number into a running hash; the order of mixing counts.
uint64_t krHashMix(uint64_t running, uint64_t next) noexcept;

/// The process's seed; drawn from the system on the first call, never zero.
uint64_t krHashSeed() noexcept;

/// Replaces the seed, for tests that build colliding books and for repeatable measurements. To be called before the
/// first hash is taken: tables filled under another seed no longer find their entries.
void krSetHashSeed(uint64_t seed) noexcept;
