#pragma once

// The allocator's calls that the portable library lacks.
namespace scrivly::Memory {

// Hands memory the allocator holds free back to the system where the allocator can (glibc keeps
// freed blocks of every thread's arena, so big short-lived buffers such as decoded pictures would
// otherwise raise the resident size for the rest of the run). Does nothing elsewhere.
void releaseFreePages() noexcept;

// Sets the allocator up for a program that decodes big pictures on several threads: one heap
// shared by all threads, and blocks of 256 KB and more mapped on their own, so that a decoded
// picture's memory goes back to the system when it is freed instead of staying reserved in
// a per-thread heap. Call first thing in main, before any thread starts. Does nothing where the
// allocator has no such settings.
void useReturnableHeap() noexcept;

} // namespace scrivly::Memory
