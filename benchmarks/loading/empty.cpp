// An empty library for comparison.
