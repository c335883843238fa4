cmake_minimum_required(VERSION 3.25)
# Fails on an #include that points the wrong way between the layers, or into the rooms of another family.
set(foundation_sees foundation)
set(image_sees foundation image measure)
set(measure_sees foundation image measure)
set(match_sees foundation image measure match)
set(gauge_sees foundation image measure match gauge)
set(read_sees foundation image measure match gauge read)
set(engine_sees foundation image measure match gauge read engine)
set(workbench/logic_sees ${engine_sees} workbench/logic)
set(workbench/views_sees ${engine_sees} workbench/logic workbench/views)
set(layers foundation image measure match gauge read engine workbench/logic workbench/views)
set(wrong "")
foreach(layer IN LISTS layers)
  file(GLOB_RECURSE sources "${ROOT}/${layer}/*.h" "${ROOT}/${layer}/*.cpp" "${ROOT}/${layer}/*.inl")
  foreach(source IN LISTS sources)
    file(STRINGS "${source}" includes REGEX "^#[ \t]*include[ \t]+[\"<]")
    foreach(line IN LISTS includes)
      if(line MATCHES "<Q[A-Za-z]+>|<Qt[A-Z]" AND NOT layer STREQUAL "workbench/views")
        string(APPEND wrong "${source}: ${line}\n")
      endif()
      foreach(other IN LISTS layers)
        if(line MATCHES "\"${other}/" AND NOT other IN_LIST ${layer}_sees)
          string(APPEND wrong "${source}: ${line}\n")
        endif()
      endforeach()
    endforeach()
  endforeach()
endforeach()

# A family is the folder below a layer that a source lies in. Its headers are its own: a frame always, any other one unless
# it is named by a subject that others need too, and stands here. What all of a layer need lies in its `core`, and row
# kernels of several families in `kernels`.
set(shared
    image/files/BitmapHeader.h       # also of bitmaps on the clipboard
    image/filter/GradientVector.h    # for what follows or matches edges
    image/filter/LocalMeans.h        # means, sums and histograms of boxes, for adaptive thresholds and equalisations
    image/filter/RowRing.h           # rows replicated beyond the edges
    image/filter/SquareFilters.h     # the 3 x 3 filters as steps of other operations
    image/geometry/GeometryModel.h   # points mapped by a calibration, for gauges
    image/geometry/QuarterTurn.h     # quarter turns as steps of other operations
    image/geometry/TurnKernels.h     # transposition, so that rows can be filtered as columns are
    image/geometry/GeometryModel.h   # fits of registration models
    measure/path/PathMoments.h       # area, center and length of outlines
    image/geometry/Warps.h           # warps into an image that is sized for them
    image/histogram/LevelCounts.h    # for thresholds and equalisations
    image/histogram/MaskedCounts.h   # for thresholds of blobs under masks
    image/morpho/MorphoExtremum.h    # dilation and erosion as steps of other operations
    image/morpho/RegionalPeaks.h     # peaks of scores
    image/histogram/NoiseEstimate.h  # for watersheds
    image/operator/PixelSteps.h      # copies and scales as steps of other operations
    image/pyramid/PyramidScale.h     # halving, which is a resampling too
    measure/fit/EdgeWalk.h measure/fit/PointFit.h measure/fit/PointHull.h measure/fit/PointMeasure.h
    measure/fit/PointShape.h # edges, fits and shapes of sets of points
    measure/path/ChordWalk.h # chains of sites reduced to polygons
    measure/profile/LinePixels.h # pixels along oblique lines, for snakes
    measure/region/RunLists.h measure/region/RunPixels.h measure/region/RunSets.h # runs, of regions and of blobs
    measure/region/RunScanner.h measure/region/ScanKernels.h measure/region/Outline.h measure/region/RowChains.h
    measure/table/ClipboardText.h measure/table/TextFields.h # tables as text, of samples and of blobs
    read/codewords/ReedSolomon.h read/codewords/SymbolText.h read/codewords/SymbolReader.h # from cells to text, for what finds and grades matrix codes
    read/codewords/CellGrid.h read/codewords/DataMatrixSizes.h read/codewords/DataMatrixCells.h read/codewords/DataMatrixText.h
    read/codewords/QRTables.h read/codewords/QRCells.h read/codewords/QRText.h
    read/codewords/DotCodeTables.h read/codewords/DotCodeCells.h read/codewords/DotCodeText.h)
set(strange "")
foreach(layer IN LISTS layers)
  file(GLOB_RECURSE sources "${ROOT}/${layer}/*.h" "${ROOT}/${layer}/*.cpp")
  foreach(source IN LISTS sources)
    file(RELATIVE_PATH place "${ROOT}" "${source}")
    get_filename_component(family "${place}" DIRECTORY)
    file(STRINGS "${source}" includes REGEX "^#[ \t]*include[ \t]+\"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#[ \t]*include[ \t]+\"([^\"]*)\".*" "\\1" header "${line}")
      get_filename_component(owner "${header}" DIRECTORY)
      # Directly in a layer's folder a header is public.
      if(NOT owner MATCHES "^(image|measure|match|gauge|read)/" OR owner STREQUAL family)
        continue()
      endif()
      if(header MATCHES "Frame\\.h$" OR NOT (owner MATCHES "/(core|kernels)$" OR header IN_LIST shared))
        string(APPEND strange "${place}: ${header}\n")
      endif()
    endforeach()
  endforeach()
endforeach()
if(strange)
  message(FATAL_ERROR "These headers belong to other families:\n${strange}")
endif()

if(wrong)
  message(FATAL_ERROR "These includes point the wrong way:\n${wrong}")
endif()
