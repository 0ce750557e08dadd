// Allocations that fail in the program for tests.
#pragma once

/// The allocation of this number from now on fails; 0: none. `full`: so do all that would take more
/// than is in use then.
void plan_failing_allocation(int number, bool full);
/// The same of the arena.
void plan_failing_arena(int number);
/// Called when one fails.
void note_failed_allocation();
