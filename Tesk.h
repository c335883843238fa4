// The public header of the library: all that an exported program needs.
#pragma once

#include "foundation/Enumerations.h"
#include "foundation/Graph.h"
#include "foundation/Records.h"
#include "foundation/Services.h"
#include "foundation/Status.h"
#include "gauge/EdgeArc.h"
#include "gauge/EdgeEllipse.h"
#include "gauge/EdgeLine.h"
#include "gauge/EdgeMap.h"
#include "gauge/EdgePlot.h"
#include "gauge/EdgePoint.h"
#include "gauge/EdgeRectangle.h"
#include "gauge/SnakeGauge.h"
#include "image/Geometry.h"
#include "image/Histogram.h"
#include "image/Image.h"
#include "image/Kernel.h"
#include "image/Morpho.h"
#include "image/Operator.h"
#include "image/Pyramid.h"
#include "image/Source.h"
#include "match/Locator.h"
#include "match/ShapeMatcher.h"
#include "measure/ArcPath.h"
#include "measure/Blobs.h"
#include "measure/Classifier.h"
#include "measure/FeatureTable.h"
#include "measure/Path.h"
#include "measure/Poly.h"
#include "measure/Profile.h"
#include "measure/Quad.h"
#include "measure/Region.h"
#include "measure/TableStore.h"
#include "read/Code1DReader.h"
#include "read/Code2DReader.h"

// Exported programs use bare names; a program with names of its own keeps the library's apart.
#ifndef TESK_NO_USING_NAMESPACE
using namespace Tesk;
#endif
