// Plane geometry of the survey: x grows to the east, y to the north; directions are in gon, from
// north and clockwise, unless a name says otherwise.
//
//   double east = CalcCoordEst(dist, bearing);
//   double bearing = AngoloDaAsseRifer(dx, dy);   // 0 to 400
//
// The functions have no state and run on any thread. The not-set value (MeasUnit.h) is respected
// where that is said; the others reckon with it as with any number. Squares and products of
// coordinate differences beyond 1e154 are infinite.
#pragma once

#include "kelp0lang/Export.h"

// Distance of two points, and its square, in the coordinates' unit.
KELP0LANG_API double Distanza2pt(const double& x1, const double& y1, const double& x2,
                                 const double& y2);
KELP0LANG_API double DistQuad2pt(const double& x1, const double& y1, const double& x2,
                                 const double& y2);

// East and north component of a distance along a direction in gon; not set if either input is.
KELP0LANG_API double CalcCoordEst(double dist, double gon);
KELP0LANG_API double CalcCoordNord(double dist, double gon);

// Direction of the vector (dx, dy) in gon, clockwise from the y axis, brought into range by
// LimiteAng0_400. The null vector gives 0.
KELP0LANG_API double AngoloDaAsseRifer(double dx, double dy);

// The turn from point 0 over point 1 to point 2: 1 counterclockwise, -1 clockwise. Of collinear
// points it tells where the third lies: -1 behind the first, 1 beyond the second, else 0.
KELP0LANG_API int ItrePtSonoInSensoAntiOrar(double x0, double y0, double x1, double y1, double x2,
                                            double y2);

// Whether the segments ab and cd meet; touching counts. With NaN among the coordinates the turns
// that need it are 0, and segments that perhaps don't meet do.
KELP0LANG_API bool IntersezLine(double ax, double ay, double bx, double by, double cx, double cy,
                                double dx, double dy);
// Whether c and d lie strictly on opposite sides of the line through a and b.
KELP0LANG_API bool IntersezDiagonaliAllInterno(double ax, double ay, double bx, double by,
                                               double cx, double cy, double dx, double dy);

// Angles into one turn, by whole turns. The ones in gon leave a tolerance of 5e-5 gon at both ends,
// so that an angle that only rounds to the end isn't thrown to the other: 399.99996 gives -0.00004,
// as it lies within the tolerance below a full turn. The not-set value, infinities and NaN stay.
// Turns are taken off one by one up to 4096 of them; a larger angle is first reduced by its exact
// remainder.
//
// [0, 360), degrees.
KELP0LANG_API void LimiteAng0_360(double& a);
// [-0.00005, 399.99995], gon.
KELP0LANG_API double LimiteAng0_400(double a);
// [-199.99995, 200.00005], gon.
KELP0LANG_API double LimiteAng200_200(double a);
