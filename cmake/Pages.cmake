# The pages for users of the library, in the order of their navigation: the package holds them, and the pages for a
# browser are made of them. The other pages are for those who have the repository.
set(qel_pages
  docs/how-to.md
  docs/embedding.md
  docs/package.md
  docs/configuration.md
  docs/data-sources.md
  docs/files-and-registry.md
  docs/diagnose.md
  docs/diagnostics.md
  docs/debugging.md
  docs/patterns.md
  docs/numbering.md
  docs/numerics.md
  docs/progress.md
  docs/worker-pool.md
  docs/surprises.md
  docs/performance.md
  docs/runtimes.md
  docs/binary-compatibility.md
  CHANGELOG.md)
file(GLOB qel_pictures RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/docs/*.png ${PROJECT_SOURCE_DIR}/docs/*.svg)
