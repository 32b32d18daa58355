* A small pure 0-1 model in free MPS, for examples/mps.qxm: maximise the
* value of five items under a weight limit, with exactly one of a pair, a
* ranged row and an objective constant of 1. Optimum 11 (b, c and d).
NAME          TINY01
OBJSENSE
    MAX
ROWS
 N  value
 L  weight
 E  oneof
 G  atleast
 L  spread
COLUMNS
    MARKER                 'MARKER'                 'INTORG'
    a         value        4   weight       3
    a         oneof        1   spread       1
    b         value        3   weight       2
    b         oneof        1
    c         value        5.0 weight       4
    c         atleast      1   spread       1
    MARKER                 'MARKER'                 'INTEND'
    d         value        2   weight       1
    d         atleast      1   spread       1
    e         value        -1  weight       1
RHS
    RHS       weight       7   oneof        1
    RHS       atleast      1   spread       2
    RHS       value        -1
RANGES
    RNG       spread       1
BOUNDS
 UP BND       a            1
 UP BND       b            1
 UP BND       c            1
 BV BND       d
 BV BND       e
ENDATA
