// Plots of arrays as text or SVG, and linear regression.
#pragma once

namespace zeb {

/// `var + Y...`: points of arrays as a text plot. `var | Y...`: bars. `var ! X Y file`: points as
/// SVG. `var \X Y`: points of Y against X. The symbol has been read.
void plot_arrays(char symbol);
/// `var & X Y...`: least squares of Y on X, kept in regr, regalfa and regbeta.
void regress_arrays();

}  // namespace zeb
