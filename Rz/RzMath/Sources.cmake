rz_add_sources(RzMath
  HEADERS RzRandom.h
  SOURCES RzRandom.cpp)
# The variates are reproducible bit for bit: no fused multiply-add contraction.
set_source_files_properties(${PROJECT_SOURCE_DIR}/Rz/RzMath/RzRandom.cpp
  PROPERTIES COMPILE_OPTIONS -ffp-contract=off)
