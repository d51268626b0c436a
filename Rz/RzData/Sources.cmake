rz_add_sources(RzData)
