// Unit conversions as one would write them by hand for the factors of MeasUnit.h: the same results
// for numbers and known units, and no test for anything else.
#pragma once

#include "kelp0lang/MeasUnit.h"

namespace bench {

[[gnu::visibility("default")]] double ConvertDistByHand(double value, enumDistUnits from,
                                                        enumDistUnits to);
[[gnu::visibility("default")]] double ConvertAngleByHand(double value, enumAngleUnits from,
                                                         enumAngleUnits to);
// The angle of a direction.
[[gnu::visibility("default")]] double TurnAngleByHand(double value, enumAngleUnits fromUnits,
                                                      enumHorizStartAngle fromStart,
                                                      enumAngleDir fromDir, enumAngleUnits toUnits,
                                                      enumHorizStartAngle toStart,
                                                      enumAngleDir toDir,
                                                      enumNormalizeAngle normalize);

}  // namespace bench
