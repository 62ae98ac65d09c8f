; A hexagon bolt seen from the side and from the head: (bolt point diameter length), or the command BOLT.
; All measures follow from the nominal diameter.

(defun at (p x y) (list (+ (car p) x) (+ (cadr p) y)))

(defun add-line (a b layer)
  (entmake (list '(0 . "LINE") (cons 8 layer) (cons 10 a) (cons 11 b))))

(defun add-box (p x1 y1 x2 y2 layer)
  (entmake (append (list '(0 . "LWPOLYLINE") (cons 8 layer) '(90 . 4) '(70 . 1))
                   (mapcar '(lambda (c) (cons 10 c))
                           (list (at p x1 y1) (at p x2 y1) (at p x2 y2) (at p x1 y2))))))

(defun hexagon (centre across layer / r)
  (setq r (/ across 2.0 (cos (/ pi 6))))
  (entmake (append (list '(0 . "LWPOLYLINE") (cons 8 layer) '(90 . 6) '(70 . 1))
                   (mapcar '(lambda (k) (cons 10 (polar centre (* k (/ pi 3)) r))) '(0 1 2 3 4 5)))))

(defun bolt (p d len / across head thread)
  (setq across (* 1.5 d)
        head (* 0.7 d)
        thread (min len (+ (* 2.0 d) 6.0)))
  (add-box p (- head) (/ across -2.0) 0.0 (/ across 2.0) "Bolt")
  (add-box p 0.0 (/ d -2.0) len (/ d 2.0) "Bolt")
  (foreach y (list (* 0.425 d) (* -0.425 d))
    (add-line (at p (- len thread) y) (at p len y) "Thread"))
  (add-line (at p (- len thread) (/ d -2.0)) (at p (- len thread) (/ d 2.0)) "Thread")
  (add-line (at p (- (* -1.0 head) 3.0) 0.0) (at p (+ len 3.0) 0.0) "Axis")
  (hexagon (at p (- (* -1.0 head) across) 0.0) across "Bolt")
  (entmake (list '(0 . "CIRCLE") '(8 . "Bolt") (cons 10 (at p (- (* -1.0 head) across) 0.0)) (cons 40 (/ across 2.0))))
  (strcat "M" (rtos d 2 0) " x " (rtos len 2 0)))

(defun c:bolt (/ p d len)
  (setq p (getpoint "Under the head: "))
  (initget 7)
  (setq d (getreal "Nominal diameter: "))
  (initget 7)
  (setq len (getdist p "Length: "))
  (princ (bolt p d len))
  (princ))
