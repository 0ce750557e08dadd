// The numbered variables: cells, the names given to some of them, and arrays, which are runs of
// cells. Under protection an array knows its dimensions; without it only its index cells tell where
// its rows begin.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "macro/macro_state.h"

namespace zeb {

/// Value of a cell; the number must be in range.
double variable_value(int number);
/// Stores a value, truncated toward zero in integer mode.
void store_variable(int number, double value);
/// The value as 32 bits, for bit operations: truncated, then its lowest bits. 0 where it is too
/// large for 64 bits, or no number.
std::int32_t value_bits(double value);
/// Ends the command unless 0 <= number < maximum.
void check_variable(double number);

/// Bytes of a cell.
int variable_cell_size();
/// Bytes from a variable's first cell to the end of the store, for strings.
std::span<char> string_bytes(int number);
/// The string that starts in the variable's cells, up to its NUL.
std::string variable_string(int number);

/// Number of the last named variable of that name, exact case; -1 none.
int find_variable(std::string_view name);
std::string_view variable_name(int number);
/// Dimensions of the array that starts at the cell; empty for scalars or without protection.
std::span<const int> variable_dimensions(int number);
/// Cells that an array of these sizes takes: D1 + D1*D2 + ... ; more than an integer may hold.
double array_cells(std::span<const int> sizes);
/// First data cell of an array, after all its index cells; and how many data cells it has.
int first_data_cell(int number);
std::int64_t data_cell_count(std::span<const int> sizes);
/// Lays out an array: writes its index cells, and under protection its dimensions.
void lay_out_array(int number, std::span<const int> sizes);
/// The first variable after all named ones and their cells; at least the var shift.
int next_free_variable();
/// Gives the name and dimensions to a variable. All checks of names and space are made here.
void name_variable(int number, std::string_view name, std::span<const int> sizes);
/// Takes the names of the variables at or above `number` off the list of names, and nothing off the
/// heap.
void remove_names(int number);
/// Removes the names of the variables at or above `number` (only of the current file), and gives
/// back what the heap held above the names that stay.
void dename_from(int number);
int var_shift();

/// The shortest text without an exponent that reads back as the same value.
std::string all_digits(double value);
/// "%i" for integral values, "nan" for no number, else the current format.
std::string value_text(double value);

}  // namespace zeb
