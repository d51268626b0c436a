rz_add_sources(FileSpec)
