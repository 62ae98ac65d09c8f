;; KovaCAD Standard Hatch Pattern Definitions
;; Compatible with AutoCAD .pat format
;; Lengths in millimetres.

*ANSI31,ANSI Iron, Brick, Stone masonry
45, 0,0, 0,3.175

*ANSI32,ANSI Steel
45, 0,0, 0,9.525
45, 4.49013,0, 0,9.525

*ANSI33,ANSI Bronze, Brass, Copper
45, 0,0, 0,6.35
45, 4.490128053,0, 0,6.35, 3.175, -1.5875

*ANSI34,ANSI Plastic, Rubber
45, 0,0, 0,19.05
45, 4.490128053,0, 0,19.05
45, 8.9802561314,0, 0,19.05
45, 13.4703841844,0, 0,19.05

*ANSI35,ANSI Fire brick, Refractory material
45, 0,0, 0,6.35
45, 4.490128053,0, 0,6.35, 7.9375, -1.5875, 0, -1.5875

*ANSI36,ANSI Marble, Slate, Glass
45, 0,0, 5.55625,3.175, 7.9375, -1.5875, 0, -1.5875

*ANSI37,ANSI Lead, Zinc, Magnesium, Insulation
45, 0,0, 0,3.175
135, 0,0, 0,3.175

*ANSI38,ANSI Aluminum
45, 0,0, 0,3.175
135, 0,0, 6.35,3.175, 7.9375, -4.7625

*ANGLE,Steel angle sections
0, 0,0, 0,6.985, 5.08, -1.905
90, 0,0, 0,6.985, 5.08, -1.905

*AR-B816,Block wall 8x16, stretcher bond
0, 0,0, 0,203.2
90, 0,0, 203.2,203.2, 203.2, -203.2

*AR-B816C,Block wall 8x16, stretcher bond, with joints
0, 0,0, 203.2,203.2, 396.875, -9.525
0, -203.2,9.525, 203.2,203.2, 396.875, -9.525
90, 0,0, 203.2,203.2, -212.725, 193.675
90, -9.525,0, 203