rz_add_sources(RzSystem)
