// What the user's keys mean to a running command.
#pragma once

namespace zeb {

/// What a look at the keyboard asks for.
enum class key_wish { nothing, interrupt, end_search };
/// The poll of a running command: <esc>, "m" within a search, "p". Never waits unless the user
/// paused or is asked; a pause isn't counted as time of the command.
key_wish poll_interrupt_keys();
/// The same for a command that waits for others: "." ends the waiting, too.
key_wish poll_waiting_keys();
/// Waits for a key: <esc> interrupts, another goes on.
key_wish wait_interrupt_key();

}  // namespace zeb
