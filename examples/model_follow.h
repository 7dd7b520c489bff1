#ifndef model_follow_h
#define model_follow_h

// Writes the beam into path and forks: a solver appends the increments of
// the last step to its history, flushing after each, while a viewer in this
// process calls Snap after each flush and checks what it sees. 0 when the
// viewer saw every increment and the solver ended well.
int Follow(char const* path);

#endif
