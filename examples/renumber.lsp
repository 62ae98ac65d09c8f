; (renumber block tag first): gives the attribute of that tag in all references of a block running numbers, from left
; to right. Gives the number of references.

(defun attribute-of (insert tag / e data found)
  (setq e (entnext insert))
  (while (and e (null found))
    (setq data (entget e))
    (cond ((/= (cdr (assoc 0 data)) "ATTRIB") (setq e nil))
          ((= (strcase (cdr (assoc 2 data))) (strcase tag)) (setq found data))
          (T (setq e (entnext e)))))
  found)

(defun insert-x (e) (cadr (assoc 10 (entget e))))

(defun renumber (block tag first / set i inserts data)
  (setq set (ssget "X" (list '(0 . "INSERT") (cons 2 block) '(66 . 1))) i 0)
  (if set
    (progn
      (repeat (sslength set)
        (setq inserts (cons (ssname set i) inserts) i (1+ i)))
      (foreach e (vl-sort inserts '(lambda (a b) (< (insert-x a) (insert-x b))))
        (if (setq data (attribute-of e tag))
          (progn
            (entmod (subst (cons 1 (itoa first)) (assoc 1 data) data))
            (entupd e)
            (setq first (1+ first)))))
      (length inserts))
    0))
