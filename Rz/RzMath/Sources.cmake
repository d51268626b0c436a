rz_add_sources(RzMath)
