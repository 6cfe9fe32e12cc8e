// A library without anything in it, to compare with.
